// Two windows, of which the mode of the view has one in front.

#include "app/renderwindows.h"

#include <QMainWindow>
#include <QSignalSpy>
#include <QTest>
#include <gtest/gtest.h>

#include "glsupport/renderrig.h"
#include "scene/sceneedits.h"
#include "support/logcapture.h"

namespace tirn {
namespace {

/// Windows without a picture for each eye, which no virtual display has; how they take turns is the same.
class TwoWindows : public ::testing::Test
{
private:
    int m_argc = 1;
    char m_name[5] = "tirn";
    char* m_argv[2] = {m_name, nullptr};
    QApplication m_application{m_argc, m_argv};
    test::LogCapture m_log;
    HiddenContext m_hidden;
    GlInfo m_info{m_hidden};
    GlCapabilities m_card = (m_hidden.makeCurrent(), m_info.readCapabilities());
    std::unique_ptr<Shaders> m_shaders = std::make_unique<Shaders>();
    RenderLock m_lock;
    test::CountingEvents m_events;

protected:
    TwoWindows()
    {
        main.setCentralWidget(stack);
        windows = std::make_unique<RenderWindows>(model, *stack, *regular, *stereo, current);
        main.resize(300, 300);
        main.show();
        EXPECT_TRUE(QTest::qWaitForWindowExposed(&main));
        EXPECT_TRUE(drawsIn(*regular));
    }
    ~TwoWindows() override
    {
        windows.reset();
        regular->stopAndWait();
        stereo->stopAndWait();
        delete stack;
        m_hidden.makeCurrent();
    }
    TirnWidget* widget(const char* name)
    {
        return new TirnWidget(name, {m_card, model, *m_shaders, m_lock, m_events, m_hidden}, false, stack);
    }
    void setMode(RenderMode mode)
    {
        model.edit(Change::Look, [mode](Scene& scene) { setRenderMode(scene.view, mode); });
    }
    /// Whether a window gets a frame.
    static bool drawsIn(TirnWidget& widget)
    {
        const int before = widget.renderThread().framesDrawn();
        return QTest::qWaitFor([&] {
            widget.requestFrame();
            return widget.renderThread().framesDrawn() > before;
        });
    }

    SceneModel model;
    QMainWindow main;
    QStackedWidget* stack = new QStackedWidget(&main);
    TirnWidget* regular = widget("regular");
    TirnWidget* stereo = widget("stereo");
    QPointer<TirnWidget> current;
    std::unique_ptr<RenderWindows> windows;
};

TEST_F(TwoWindows, ThePlainOneIsInFrontAtFirst)
{
    EXPECT_EQ(current, regular);
    EXPECT_EQ(stack->currentWidget(), regular);
    EXPECT_TRUE(windows->hasStereo());
    EXPECT_EQ(windows->widgets().size(), 2U);
}

TEST_F(TwoWindows, AModeForTwoEyesRaisesTheOtherWithBothThreadsStoppedAndTheViewKept)
{
    model.edit(Change::Pose, [](Scene& scene) {
        scene.view.rotX = 33;
        scene.view.spinX = 4;
    });
    for (const RenderMode mode : {RenderMode::FullscreenStereo, RenderMode::Stereo}) {
        setMode(mode);
        EXPECT_EQ(current, stereo);
        EXPECT_EQ(stack->currentWidget(), stereo);
        EXPECT_FALSE(regular->renderThread().isRunning());
        EXPECT_TRUE(drawsIn(*stereo));
        setMode(RenderMode::Normal);
        EXPECT_EQ(current, regular);
        EXPECT_FALSE(stereo->renderThread().isRunning());
        EXPECT_TRUE(drawsIn(*regular));
    }
    EXPECT_TRUE(model.view().isSpinning());
}

TEST_F(TwoWindows, ModesOfOneWindowRaiseNothing)
{
    for (const RenderMode mode : {RenderMode::Anaglyph, RenderMode::FourViews, RenderMode::Normal}) {
        setMode(mode);
        EXPECT_EQ(current, regular);
    }
}

TEST_F(TwoWindows, OnlyTheOneInFrontTellsOfItsSize)
{
    std::vector<QSize> told;
    QObject context;
    windows->whenResized(&context, [&](int width, int height) { told.push_back({width, height}); });
    setMode(RenderMode::Stereo);
    EXPECT_TRUE(drawsIn(*stereo));
    told.clear();
    main.resize(350, 320);
    EXPECT_TRUE(QTest::qWaitFor([&] { return !told.empty() && told.back() == stereo->size(); }));
    EXPECT_EQ(windows->pictureSize(), stereo->size());
}

} // namespace
} // namespace tirn
