// The form of modes and stereo, in the whole program and with a window of two pictures.

#include "ui/view/rendererform.h"

#include <QComboBox>
#include <QDockWidget>
#include <QLabel>
#include <QTest>

#include "ui/widgets/floatspinbox.h"
#include "uisupport/apptest.h"
#include "uisupport/typednumber.h"

namespace tirn {
namespace {

/// A window that only says whether it has a picture for each eye.
class FakeWindow : public WindowService
{
public:
    explicit FakeWindow(bool hasStereo) : m_hasStereo(hasStereo) {}

    QSize pictureSize() const override { return {512, 512}; }
    void changeWindowDimensions(int, int) override {}
    void toggleWindowAspectRatio(bool) override {}
    bool hasStereo() const override { return m_hasStereo; }
    void whenResized(QObject*, std::function<void(int, int)>) override {}

private:
    bool m_hasStereo;
};

class Renderer : public test::AppTest
{
protected:
    /// The program's own form; there is no stereo window under test.
    RendererForm& form()
    {
        return m_stereoForm ? *m_stereoForm
                            : *static_cast<RendererForm*>(app().forms().create(FormId::Renderer, true));
    }
    void useStereoWindow() { useForm(app().card()); }
    /// A form of another card, with a window of two pictures.
    void useForm(const GlCapabilities& card)
    {
        m_card = card;
        m_stereoForm = std::make_unique<RendererForm>(FormServices{.model = app().model(),
                                                                   .loads = app().loads(),
                                                                   .stacks = app().stacks(),
                                                                   .palettes = app().stacks(),
                                                                   .jobs = app().jobs(),
                                                                   .pictures = app().pictures(),
                                                                   .window = m_window,
                                                                   .probes = app().probes(),
                                                                   .settings = m_settings,
                                                                   .card = m_card,
                                                                   .storePreferences = {},
                                                                   .form = {},
                                                                   .help = {}},
                                                      nullptr);
        m_stereoForm->show();
    }
    ~Renderer() override { m_stereoForm.reset(); }
    QComboBox& combo(const char* name) { return *form().findChild<QComboBox*>(name); }
    FloatSpinBox& eyes() { return *form().findChild<FloatSpinBox*>("spnEyeSeparation"); }
    QStringList items(const char* name)
    {
        QStringList texts;
        for (int i = 0; i < combo(name).count(); ++i)
            texts.append(combo(name).itemText(i));
        return texts;
    }
    void pick(const char* name, int index)
    {
        combo(name).setFocus();
        for (int presses = 0; presses < 10 && combo(name).currentIndex() != index; ++presses)
            QTest::keyClick(&combo(name), combo(name).currentIndex() < index ? Qt::Key_Down : Qt::Key_Up);
        EXPECT_EQ(combo(name).currentIndex(), index);
    }
    QDomElement saved()
    {
        m_element = m_document.createElement("dialog");
        form().saveSession(m_element);
        return m_element;
    }

private:
    FakeWindow m_window{true};
    GlCapabilities m_card;
    Settings m_settings;
    std::unique_ptr<RendererForm> m_stereoForm;
    QDomDocument m_document;
    QDomElement m_element;
};

constexpr OrthoBounds kPlain = {-1, 1, -1, 1, -2, 2};
constexpr OrthoBounds kWide = {-2, 2, -2, 2, -2, 2};

TEST_F(Renderer, HasItsTexts)
{
    EXPECT_EQ(form().windowTitle(), "Rendering Options");
    EXPECT_EQ(items("cboRenderMode"),
              QStringList({"Normal", "Anaglyph Stereo", "Fullscreen Stereo", "Stereo", "4 View"}));
    EXPECT_EQ(items("cboMode"), QStringList({"Alpha blend", "Max Intensity"}));
    EXPECT_EQ(items("cboFilterColors"),
              QStringList({"Red-Blue", "Red-Cyan", "Red-Green", "Blue-Red", "Cyan-Red", "Green-Red"}));
    EXPECT_EQ(items("cboFocalPoint"), QStringList({"In front of screen", "In screen", "Behind screen"}));
    QStringList labels;
    for (const QLabel* label : form().findChildren<QLabel*>()) {
        if (!label->text().isEmpty())
            labels.append(label->text());
    }
    EXPECT_EQ(labels, QStringList({"Mode", "Blending", "Filter Colors", "Eye Separation", "Focal Point"}));
    EXPECT_EQ(combo("cboFilterColors").currentText(), "Red-Green");
    EXPECT_EQ(combo("cboFocalPoint").currentText(), "In screen");
    EXPECT_EQ(eyes().doubleValue(), 0.07);
}

TEST_F(Renderer, ShowsWhatStereoNeedsOnlyForAnaglyphs)
{
    const auto shown = [&] {
        int count = 0;
        for (const QWidget* each : form().findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly))
            count += each->isVisible();
        return count;
    };
    EXPECT_EQ(shown(), 4);
    const int height = form().frame()->height();
    const int width = form().frame()->width();
    pick("cboRenderMode", 1);
    EXPECT_EQ(shown(), 4 + 6);
    EXPECT_GT(form().frame()->height(), height);
    EXPECT_EQ(form().frame()->width(), width);
    EXPECT_GE(form().height(), form().sizeHint().height());
    pick("cboRenderMode", 0);
    EXPECT_EQ(shown(), 4);
    EXPECT_EQ(form().frame()->height(), height);
}

TEST_F(Renderer, EachModeHasItsOwnProjection)
{
    form();
    pick("cboRenderMode", 1);
    EXPECT_EQ(view().renderMode, RenderMode::Anaglyph);
    EXPECT_EQ(view().ortho, kPlain);
    form().renderModeChanged(4);
    EXPECT_EQ(view().renderMode, RenderMode::FourViews);
    EXPECT_EQ(view().ortho, kWide);
    // Whichever mode is left, and not only for the normal one.
    form().renderModeChanged(1);
    EXPECT_EQ(view().ortho, kPlain);
    form().renderModeChanged(4);
    form().renderModeChanged(0);
    EXPECT_EQ(view().renderMode, RenderMode::Normal);
    EXPECT_EQ(view().ortho, kPlain);
    app().model().undoStack().undo();
    EXPECT_EQ(view().renderMode, RenderMode::FourViews);
    EXPECT_EQ(view().ortho, kWide);
    EXPECT_EQ(combo("cboRenderMode").currentIndex(), 4);
}

TEST_F(Renderer, WithoutAStereoWindowTheModeStaysAndTheListSaysWhy)
{
    form();
    pick("cboRenderMode", 1);
    const ViewState before = view();
    for (const int refused : {2, 3}) {
        combo("cboRenderMode").setCurrentIndex(refused);
        EXPECT_EQ(combo("cboRenderMode").currentIndex(), 1);
        EXPECT_TRUE(view() == before);
        EXPECT_EQ(combo("cboRenderMode").itemData(refused, Qt::ToolTipRole).toString(),
                  "Needs a display with a picture for each eye.");
    }
    // Keys pass over what is refused.
    combo("cboRenderMode").setFocus();
    QTest::keyClick(&combo("cboRenderMode"), Qt::Key_Down);
    EXPECT_EQ(view().renderMode, RenderMode::FourViews);
}

TEST_F(Renderer, WithAStereoWindowTheModeIsTaken)
{
    useStereoWindow();
    pick("cboRenderMode", 2);
    EXPECT_EQ(view().renderMode, RenderMode::FullscreenStereo);
    pick("cboRenderMode", 3);
    EXPECT_EQ(view().renderMode, RenderMode::Stereo);
    // The program's own window follows and finds that there is no other.
    EXPECT_EQ(app().currentWidget()->objectName(), "regular");
}

TEST_F(Renderer, BlendingFollowsBothWays)
{
    form();
    pick("cboMode", 1);
    EXPECT_EQ(view().blendMode, GLenum{GL_MAX});
    widget().setBlendMode(GL_FUNC_ADD);
    EXPECT_EQ(combo("cboMode").currentIndex(), 0);
    type("M");
    EXPECT_EQ(combo("cboMode").currentIndex(), 1);
    form().changeMode(GL_MIN);
    EXPECT_TRUE(log.contains("In unknown mode.  HELP!"));
    EXPECT_EQ(combo("cboMode").currentIndex(), 1);
}

TEST_F(Renderer, ACardWithoutMaximumKeepsAlpha)
{
    useForm({});
    combo("cboMode").setCurrentIndex(1);
    EXPECT_EQ(combo("cboMode").currentIndex(), 0);
    EXPECT_EQ(view().blendMode, GLenum{GL_FUNC_ADD});
    EXPECT_EQ(combo("cboMode").itemData(1, Qt::ToolTipRole).toString(),
              "Needs a video card that can blend by the maximum.");
}

TEST_F(Renderer, FilterEyesAndFocusGoToTheView)
{
    form();
    pick("cboRenderMode", 1);
    for (int pair = 0; pair < 6; ++pair) {
        pick("cboFilterColors", pair);
        EXPECT_EQ(view().filterColors, pair);
    }
    for (int point = 0; point < 3; ++point) {
        pick("cboFocalPoint", point);
        EXPECT_EQ(view().camera.focalLength, point + 1.0);
    }
    eyes().setFocus();
    eyes().selectAll();
    QTest::keyClicks(&eyes(), test::typedNumber("0.125"));
    QTest::keyClick(&eyes(), Qt::Key_Return);
    EXPECT_EQ(view().camera.eyesep, 0.125);
    for (const char* text : {"2", "-1", "1.5", "", "x"}) {
        eyes().selectAll();
        QTest::keyClicks(&eyes(), text);
        QTest::keyClick(&eyes(), Qt::Key_Return);
        EXPECT_GE(view().camera.eyesep, 0) << text;
        EXPECT_LE(view().camera.eyesep, 1) << text;
    }
}

TEST_F(Renderer, TheSessionKeepsTheTextsOfTheLists)
{
    form();
    pick("cboRenderMode", 1);
    pick("cboMode", 1);
    pick("cboFilterColors", 5);
    pick("cboFocalPoint", 2);
    const QDomElement element = saved();
    EXPECT_EQ(element.firstChildElement("blending").attribute("framebuffer"), "32776");
    const QDomElement mode = element.firstChildElement("rendermode");
    EXPECT_EQ(mode.attribute("mode"), "Anaglyph Stereo");
    EXPECT_EQ(mode.attribute("filtercolors"), "Green-Red");
    EXPECT_EQ(mode.attribute("eyeseparation").toDouble(), 0.07);
    EXPECT_EQ(mode.attribute("focalpoint"), "Behind screen");
    changeView([](ViewState& state) { state = {}; });
    form().loadSession(element);
    EXPECT_EQ(view().renderMode, RenderMode::Anaglyph);
    EXPECT_EQ(view().blendMode, GLenum{GL_MAX});
    EXPECT_EQ(view().filterColors, 5);
    EXPECT_EQ(view().camera.focalLength, 3);
    EXPECT_EQ(combo("cboRenderMode").currentIndex(), 1);
    EXPECT_TRUE(combo("cboFilterColors").isVisible());
}

TEST_F(Renderer, ASessionWithoutAttributesGivesTheStatedOnes)
{
    form();
    pick("cboRenderMode", 4);
    QDomDocument document;
    document.setContent(QString("<dialog><blending/><rendermode/></dialog>"));
    changeView([](ViewState& state) {
        state.blendMode = GL_MAX;
        state.filterColors = 0;
        state.camera.eyesep = 0.5;
        state.camera.focalLength = 1;
    });
    form().loadSession(document.documentElement());
    EXPECT_EQ(view().renderMode, RenderMode::Normal);
    EXPECT_EQ(view().ortho, kPlain);
    EXPECT_EQ(view().blendMode, GLenum{GL_FUNC_ADD});
    EXPECT_EQ(view().filterColors, 2);
    EXPECT_EQ(view().camera.eyesep, 0.07);
    EXPECT_EQ(view().camera.focalLength, 2);
}

TEST_F(Renderer, ASessionThatAsksForStereoWithoutAWindowForItKeepsTheMode)
{
    form();
    pick("cboRenderMode", 4);
    QDomDocument document;
    document.setContent(QString("<dialog><rendermode mode=\"Stereo\"/></dialog>"));
    form().loadSession(document.documentElement());
    EXPECT_EQ(view().renderMode, RenderMode::FourViews);
    EXPECT_EQ(view().ortho, kWide);
}

TEST_F(Renderer, TheWheelStopsBeforeTheEyesEnterTheVolume)
{
    load({picFile("a.pic", 16, 16, 16)});
    changeView([](ViewState& state) { state.zoom = 1; });
    form();
    pick("cboRenderMode", 1);
    const auto notches = [&](int count, int delta) {
        for (int i = 0; i < count; ++i) {
            QWheelEvent event(QPointF(9, 9), widget().mapToGlobal(QPoint(9, 9)), {}, {0, delta}, {}, {},
                              Qt::NoScrollPhase, false);
            QCoreApplication::sendEvent(&widget(), &event);
        }
        return app().scene().current()->scale.x;
    };
    // The eyes stand two units before the middle and see from 0.1 on; the box ends at the scale.
    EXPECT_NEAR(notches(100, 120), 1.9, 1e-6);
    EXPECT_LT(notches(1, -120), 1.85) << "the way back is free";
    form().renderModeChanged(0);
    EXPECT_GT(notches(40, 120), 5);
}

} // namespace
} // namespace tirn
