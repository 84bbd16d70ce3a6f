#include "app/windowstage.h"

#include "base/log.h"

namespace tirn {

namespace {

constexpr int kFirstWindowSide = 512;

/// Null where a window cannot have a picture for each eye.
TirnWidget* makeStereoWidget(const WidgetServices& services, QWidget* parent)
{
    auto widget = std::make_unique<TirnWidget>("stereo", services, true, parent);
    const bool works = widget->surface().isStereo();
    logDebug(works ? "Yay we have stereo" : "Boo stereo busted!");
    return works ? widget.release() : nullptr;
}

} // namespace

std::unique_ptr<WindowStage> WindowStage::probe(SceneModel& model)
{
    auto hidden = std::make_unique<HiddenContext>();
    if (!hidden->context().isValid())
        return nullptr;
    return std::unique_ptr<WindowStage>(new WindowStage(model, std::move(hidden)));
}

WindowStage::WindowStage(SceneModel& model, std::unique_ptr<HiddenContext> hidden)
    : m_model(model), m_hidden(std::move(hidden)), m_glInfo(std::make_unique<GlInfo>(*m_hidden))
{
    if (!m_hidden->makeCurrent())
        logFatal("Could not allocate a GL context");
    m_card = m_glInfo->readCapabilities();
    m_shaders = std::make_unique<Shaders>();
}

WindowStage::~WindowStage()
{
    // Their textures go while the card is there.
    m_hidden->makeCurrent();
    m_model.sharedScene().arrays.clear();
    m_model.sharedScene().palettes.clear();
    m_shaders.reset();
}

QStackedWidget* WindowStage::createWidgets(RenderEvents& events, QWidget* parent)
{
    const WidgetServices services{m_card, m_model, *m_shaders, m_renderLock, events, *m_hidden};
    auto stack = std::make_unique<QStackedWidget>(parent);
    auto* regular = new TirnWidget("regular", services, false, stack.get());
    if (!regular->surface().isValid())
        return nullptr;
    TirnWidget* stereo = nullptr;
    if (m_glInfo->hasStereo())
        stereo = makeStereoWidget(services, stack.get());
    else
        logDebug("Stereo not supported");
    logDebug(regular->surface().isSharing() ? "yay sharing working" : "Boo no sharing");
    logDebug("Paletted textures %s", m_card.hasPalettedTexture ? "supported" : "not supported");
    logDebug("ARB non power of 2 textures %s", m_glInfo->hasNonPowerOfTwo() ? "supported" : "not supported");
    m_windows = std::make_unique<RenderWindows>(m_model, *stack, *regular,
                                                stereo != nullptr ? *stereo : *regular, m_currentWidget);
    m_currentWidget->setMinimumSize(kFirstWindowSide, kFirstWindowSide);
    m_paletteTables = std::make_unique<GlPaletteTables>(threadKind(), m_hidden.get());
    m_curveTextures = std::make_unique<GlCurveTextures>(m_hidden.get());
    m_model.setDrawing({[this] { stopDrawing(); }, [this] { makeCurrent(); }});
    return stack.release();
}

void WindowStage::stopDrawing()
{
    if (m_currentWidget != nullptr)
        m_currentWidget->stopAndWait();
}

} // namespace tirn
