#include "app/tirnapplication.h"

#include <utility>

#include <QScreen>

#include "app/menus.h"
#include "base/log.h"
#include "ui/formplaces.h"
#include "ui/messages.h"
#include "ui/open/sequencetiffform.h"
#include "ui/open/stackopenform.h"
#include "ui/palettes/palettesaving.h"

namespace tirn {

namespace {

constexpr int kFirstWindowSide = 512;
constexpr int kLeastWidgetSide = 128;

} // namespace

TirnApplication::TirnApplication(int& argc, char** argv)
    : QApplication(argc, argv), m_preferences(m_model), m_stacks(m_model, [this] { finishJobs(); }),
      m_renderEvents(*this), m_help(applicationDirPath() + "/docs")
{
    setOrganizationName("Tirn");
    setApplicationName("Tirn2");
    colourInputs();
    connect(&m_stacks, &StackList::currentArrayChanged, this, &TirnApplication::currentArrayChanged);
    connect(&m_stacks, &StackList::stackClosed, this, &TirnApplication::stackClosed);
}

/// Input fields take the background of their window, also when the desktop turns dark or light.
void TirnApplication::colourInputs()
{
    QPalette inputs = QApplication::palette();
    // Setting them tells of a change again.
    if (QApplication::palette("QSpinBox").color(QPalette::Base) == inputs.color(QPalette::Window))
        return;
    for (const QPalette::ColorGroup group : {QPalette::Active, QPalette::Inactive})
        inputs.setColor(group, QPalette::Base, inputs.color(group, QPalette::Window));
    for (const char* widgetClass : {"QSpinBox", "QTableWidget", "QComboBox", "tirn::FileChooser"})
        setPalette(inputs, widgetClass);
}

bool TirnApplication::event(QEvent* event)
{
    const bool handled = QApplication::event(event);
    if (event->type() == QEvent::ApplicationPaletteChange)
        // The toolkit forgets colours of classes after it has told of the change.
        QMetaObject::invokeMethod(this, &TirnApplication::colourInputs, Qt::QueuedConnection);
    return handled;
}

TirnApplication::~TirnApplication()
{
    finishJobs();
    m_loads.reset();
    if (m_currentWidget != nullptr)
        m_currentWidget->stopAndWait();
    // Events still on their way may hold a volume, which must go while the card is there.
    removePostedEvents(this);
    if (m_glInfo != nullptr) {
        m_hidden->makeCurrent();
        m_model.sharedScene().arrays.clear();
        m_model.sharedScene().palettes.clear();
        m_shaders.reset();
    }
    m_jobs.reset();
    m_forms.reset();
    m_windows.reset();
    m_mainForm.reset();
    m_currentWidget = nullptr;
    logDebug("cleaned up after app");
}

TirnApplication& TirnApplication::instance()
{
    return *static_cast<TirnApplication*>(QCoreApplication::instance());
}

bool TirnApplication::initializeGl()
{
    m_hidden = std::make_unique<HiddenContext>();
    if (!m_hidden->context().isValid()) {
        m_hidden.reset();
        return false;
    }
    m_glInfo = std::make_unique<GlInfo>(*m_hidden);
    if (!m_hidden->makeCurrent())
        logFatal("Could not allocate a GL context");
    m_card = m_glInfo->readCapabilities();
    m_shaders = std::make_unique<Shaders>();
    m_mainForm = std::make_unique<MainForm>(
        "Main", MainFormServices{m_preferences.settings(), m_preferences.store(), m_model, m_probes});
    createWidgets();
    if (m_currentWidget == nullptr) {
        waitForMessage(m_mainForm.get(), QMessageBox::Critical, "Unknown Video Card",
                       "Your video card does not appear to be compatible with this software. Sorry.");
        return true;
    }
    createServices();
    connectWidgets();
    placeMainForm();
    m_mainForm->show();
    for (TirnWidget* widget : m_windows->widgets())
        widget->setMinimumSize(kLeastWidgetSide, kLeastWidgetSide);
    m_currentWidget->setFocus();
    m_currentWidget->requestFrame();
    m_card.hasPBuffer = m_glInfo->hasPBuffer();
    createForms();
    return true;
}

void TirnApplication::createWidgets()
{
    const WidgetServices services{m_card, m_model, *m_shaders, m_renderLock, m_renderEvents, *m_hidden};
    m_widgetStack = new QStackedWidget(m_mainForm.get());
    m_regularWidget = new TirnWidget("regular", services, false, m_widgetStack);
    if (!m_regularWidget->surface().isValid()) {
        delete m_regularWidget;
        return;
    }
    m_stereoWidget = m_regularWidget;
    if (m_glInfo->hasStereo())
        createStereoWidget(services);
    else
        logDebug("Stereo not supported");
    m_currentWidget = m_regularWidget;
    logDebug(m_regularWidget->surface().isSharing() ? "yay sharing working" : "Boo no sharing");
    logDebug("Paletted textures %s", m_card.hasPalettedTexture ? "supported" : "not supported");
    logDebug("ARB non power of 2 textures %s", m_glInfo->hasNonPowerOfTwo() ? "supported" : "not supported");
    m_windows = std::make_unique<RenderWindows>(m_model, *m_widgetStack, *m_regularWidget, *m_stereoWidget,
                                                m_currentWidget);
    m_currentWidget->setMinimumSize(kFirstWindowSide, kFirstWindowSide);
    m_mainForm->setCentralWidget(m_widgetStack);
}

void TirnApplication::createStereoWidget(const WidgetServices& services)
{
    auto* widget = new TirnWidget("stereo", services, true, m_widgetStack);
    const bool works = widget->surface().isStereo();
    logDebug(works ? "Yay we have stereo" : "Boo stereo busted!");
    if (works)
        m_stereoWidget = widget;
    else
        delete widget;
}

void TirnApplication::createServices()
{
    const RenderThreadKind kind = m_currentWidget->threadKind();
    m_paletteTables = std::make_unique<GlPaletteTables>(kind, m_hidden.get());
    m_curveTextures = std::make_unique<GlCurveTextures>(m_hidden.get());
    m_stacks.setPaletteTables(m_paletteTables.get());
    m_model.setDrawing({[this] { m_currentWidget->stopAndWait(); }, [this] { m_hidden->makeCurrent(); }});
    Settings& settings = m_preferences.settings();
    const auto form = [this](FormId id, bool show) {
        ToolForm* there = m_forms->form(id);
        return there != nullptr && !show ? there : m_forms->create(id, show);
    };
    m_loads = std::make_unique<Loads>(LoadNeeds{m_model, m_stacks, *m_mainForm, settings, m_probes, *m_hidden,
                                                kind, *m_paletteTables, *m_curveTextures, form},
                                      *this);
    m_jobs = std::make_unique<Jobs>(m_model, *m_mainForm, settings, m_hidden->context(), m_renderLock, *this);
    m_pictures = std::make_unique<Pictures>(m_model, m_currentWidget, *m_hidden, m_card, settings);
    const auto keep = [this](const Settings& chosen) {
        const QString error = m_preferences.keep(chosen);
        if (!error.isEmpty())
            showMessage(m_mainForm.get(), QMessageBox::Warning, "Preferences", error);
    };
    m_forms = std::make_unique<FormTable>(*m_mainForm,
                                          FormServices{m_model, *m_loads, m_stacks, *m_jobs, *m_pictures,
                                                       *m_windows, m_probes, settings, m_card, keep, form});
}

void TirnApplication::connectWidgets()
{
    MainForm* form = m_mainForm.get();
    connect(form, &MainForm::loadRecentPalette, m_loads.get(), &Loads::loadPalettes);
    connect(form, &MainForm::loadRecentRaw, m_loads.get(), &Loads::loadRecentRaw);
    connect(form, &MainForm::savePalette, this,
            [this](Palette* palette) { savePalette(*palette, m_preferences.settings(), m_mainForm.get()); });
    connect(form, &MainForm::loadSession, this, &TirnApplication::loadSession);
    form->setCloseHandler([this] {
        m_currentWidget->stopAndWait();
        return m_jobs->mayClose();
    });
    form->setMinimisedHandler([this](bool minimised) {
        if (minimised)
            m_currentWidget->stopRendering();
        else
            m_currentWidget->requestFrame();
    });
    const MenuTargets targets{*form,   m_model,     m_stacks, *m_loads,
                              *m_jobs, *m_pictures, *m_forms, [this](const QString& page) { help(page); }};
    connectActions(targets);
    for (TirnWidget* widget : m_windows->widgets()) {
        connect(widget, &TirnWidget::scaleChanged, this, &TirnApplication::scaleChanged);
        connect(widget, &TirnWidget::arrayRequested, &m_stacks, &StackList::setCurrent);
        connect(widget, &TirnWidget::helpRequested, this, qOverload<const QString&>(&TirnApplication::help));
        connect(widget, &TirnWidget::quitRequested, form, &MainForm::close);
        fillContextMenu(widget->contextMenu(), targets);
    }
}

void TirnApplication::placeMainForm()
{
    const QSize desktop = primaryScreen()->size();
    m_mainForm->adjustSize();
    m_mainForm->move(firstWindowPosition(desktop, kFirstWindowSide));
}

void TirnApplication::createForms()
{
    m_forms->createAllHidden();
    const auto* open = static_cast<StackOpenForm*>(m_forms->form(FormId::Stack));
    const auto* sequence = static_cast<SequenceTiffForm*>(m_forms->form(FormId::SequenceTiff));
    connect(m_mainForm.get(), &MainForm::loadRecentStack, open, &StackOpenForm::buildFileList_knownList);
    connect(m_mainForm.get(), &MainForm::loadTiffs, sequence, &SequenceTiffForm::setFilename);
    connect(m_mainForm.get(), &MainForm::closing, m_forms.get(),
            [this] { m_forms->save(m_preferences.store()); });
}

void TirnApplication::start()
{
    m_preferences.read({m_card.maxTexture2D, m_card.maxTexture3D});
    // A bar of round length is what users expect of a window.
    m_model.edit(Change::Look, [](Scene& scene) { scene.view.roundScaleBar = true; });
    if (m_preferences.settings().blending == 1)
        m_currentWidget->setBlendMode(GL_MAX);
    PaletteList favorites;
    appendFavoritePalettes(favorites, m_preferences.settings().favoritePalettesPath, m_paletteTables.get());
    m_stacks.addPalettes(std::move(favorites));
    m_mainForm->readRecentLists();
    m_forms->restore(m_preferences.store());
    m_currentWidget->requestFrame();
    loadFromCommandLine(arguments());
}

void TirnApplication::finishJobs()
{
    if (m_jobs != nullptr)
        m_jobs->finish();
}

void TirnApplication::loadSession(const QString& name)
{
    showMessage(m_mainForm.get(), QMessageBox::Warning, "Session",
                "Sessions cannot be read in this version: " + name);
}

VoxelArray* TirnApplication::currentArray() const
{
    VoxelArray* array = scene().current();
    // The text has the condition of the opposite case.
    if (array != nullptr) {
        static bool reported = false;
        if (!std::exchange(reported, true))
            logAssertion("currentIndex < 0 || currentIndex >= (int) arrays.size()", "tirnapp", __LINE__);
    }
    return array;
}

Palette* TirnApplication::palette(int index) const
{
    const bool valid = index >= 0 && index < static_cast<int>(scene().palettes.size());
    return valid ? scene().palettes[static_cast<std::size_t>(index)].get() : nullptr;
}

void TirnApplication::customEvent(QEvent* event)
{
    const auto id = static_cast<EventId>(event->type());
    m_renderEvents.arrived(id);
    switch (id) {
    case EventId::TimePoint:
        m_model.follow(Change::TimePoint);
        return;
    case EventId::Rotation:
        m_model.follow(Change::Pose);
        return;
    case EventId::StatisticsDone:
        m_model.follow(Change::Voxels);
        return;
    case EventId::Progress:
        m_loads->handle(static_cast<const ProgressEvent&>(*event));
        return;
    case EventId::StackLoaded:
        m_loads->handle(static_cast<StackLoadedEvent&>(*event));
        return;
    case EventId::KeyFrame:
        Q_EMIT frameRecorded(static_cast<const KeyFrameEvent&>(*event).count);
        return;
    case EventId::Start:
        start();
        return;
    case EventId::ReencodeDone:
        m_loads->resetProgress();
        m_jobs->handle(static_cast<const ReencodeDoneEvent&>(*event));
        return;
    case EventId::ImageProgress: {
        const auto& progress = static_cast<const ImageProgressEvent&>(*event);
        if (!m_jobs->handle(progress))
            m_loads->showProgress(progress.message, progress.progress, progress.total);
        return;
    }
    }
    showMessage(m_mainForm.get(), QMessageBox::Warning, "Unknown Event",
                "id " + QString::number(static_cast<int>(event->type())));
}

} // namespace tirn
