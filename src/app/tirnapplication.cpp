// Start and end of the program.

#include "app/tirnapplication.h"

#include <QFileInfo>
#include <QMenu>
#include <QMessageBox>
#include <QScreen>
#include <QStatusBar>

#include "base/log.h"
#include "palettes/palettelist.h"
#include "ui/aboutform.h"
#include "ui/preferencesform.h"

namespace tirn {

namespace {

constexpr int kFirstWindowSide = 512;
constexpr int kLeastWidgetSide = 128;

/// Carries what the render thread has to say over to the interface thread.
class EventPoster : public RenderEvents
{
public:
    explicit EventPoster(QObject& receiver) : m_receiver(receiver) {}

    void rotationDrawn(double x, double y, double z) override
    {
        post(std::make_unique<RotationEvent>(x, y, z));
    }
    void keyFrameRecorded(int count) override { post(std::make_unique<KeyFrameEvent>(count)); }
    void timePointAdvanced() override { post(std::make_unique<TimePointEvent>()); }

private:
    void post(std::unique_ptr<QEvent> event) { QCoreApplication::postEvent(&m_receiver, event.release()); }

    QObject& m_receiver;
};

} // namespace

TirnApplication::TirnApplication(int& argc, char** argv)
    : QApplication(argc, argv), m_help(applicationDirPath() + "/docs")
{
    setOrganizationName("Tirn");
    setApplicationName("Tirn2");
    m_settings = std::make_unique<QSettings>(QSettings::IniFormat, QSettings::UserScope, "Tirn", "Tirn2");
    // Input fields take the background of their window.
    QPalette inputs = QApplication::palette();
    for (const QPalette::ColorGroup group : {QPalette::Active, QPalette::Inactive})
        inputs.setColor(group, QPalette::Base, inputs.color(group, QPalette::Window));
    for (const char* widgetClass : {"QSpinBox", "QTableWidget", "QComboBox", "tirn::FileChooser"})
        setPalette(inputs, widgetClass);
}

TirnApplication::~TirnApplication()
{
    if (m_fileThread != nullptr)
        m_fileThread->stopAndWait();
    if (m_currentWidget != nullptr)
        m_currentWidget->stopAndWait();
    // Events still on their way may hold a volume, which must go while the card is there.
    removePostedEvents(this);
    if (m_glInfo != nullptr) {
        m_hidden->makeCurrent();
        m_scene.arrays.clear();
        m_scene.palettes.clear();
        m_shaders.reset();
    }
    m_fileThread.reset();
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
    readCapabilities();
    m_shaders = std::make_unique<Shaders>();
    m_renderEvents = std::make_unique<EventPoster>(*this);
    m_mainForm = std::make_unique<MainForm>("Main");
    createWidgets();
    if (m_currentWidget == nullptr) {
        QMessageBox::critical(m_mainForm.get(), "Unknown Video Card",
                              "Your video card does not appear to be compatible with this software. Sorry.");
        return true;
    }
    connectWidgets();
    connectActions();
    buildContextMenu();
    placeMainForm();
    m_mainForm->show();
    m_currentWidget->setMinimumSize(kLeastWidgetSide, kLeastWidgetSide);
    m_currentWidget->setFocus();
    m_currentWidget->requestFrame();
    m_card.hasPBuffer = m_glInfo->hasPBuffer();
    createForms();
    createThreads();
    return true;
}

void TirnApplication::readCapabilities() { m_card = m_glInfo->readCapabilities(); }

void TirnApplication::createWidgets()
{
    const WidgetServices services{m_card,       m_scene,         m_renderSettings, *m_shaders,
                                  m_renderLock, *m_renderEvents, *m_hidden};
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
    m_widgetStack->addWidget(m_regularWidget);
    if (m_stereoWidget != m_regularWidget)
        m_widgetStack->addWidget(m_stereoWidget);
    m_currentWidget->setMinimumSize(kFirstWindowSide, kFirstWindowSide);
    m_mainForm->setCentralWidget(m_widgetStack);
    m_paletteTables = std::make_unique<GlPaletteTables>(m_currentWidget->threadKind(), m_hidden.get());
    m_curveTextures = std::make_unique<GlCurveTextures>(m_hidden.get());
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

void TirnApplication::connectWidgets()
{
    TirnWidget* widget = m_currentWidget;
    MainForm* form = m_mainForm.get();
    connect(widget, &TirnWidget::modeChanged, form, &MainForm::updateBlendingStatus);
    connect(this, &TirnApplication::currentArrayChanged, form, [this, form] {
        form->updateTextureStatus(m_scene.current());
        form->updateMemoryStatus();
    });
    connect(this, &TirnApplication::stackClosed, form, &MainForm::updateMemoryStatus);
    connect(this, &TirnApplication::updateMemoryStatus, form, &MainForm::updateMemoryStatus);
    connect(widget, &TirnWidget::scaleChanged, this, &TirnApplication::scaleChanged);
    connect(widget, &TirnWidget::arrayRequested, this, &TirnApplication::setCurrentArray);
    connect(widget, &TirnWidget::helpRequested, this, qOverload<const QString&>(&TirnApplication::help));
    connect(widget, &TirnWidget::quitRequested, this, [] { QCoreApplication::exit(0); });
    form->setCloseHandler([this] { m_currentWidget->stopAndWait(); });
    form->setMinimisedHandler([this](bool minimised) {
        if (minimised)
            m_currentWidget->stopRendering();
        else
            m_currentWidget->requestFrame();
    });
}

void TirnApplication::connectActions()
{
    const auto on = [this](const char* name, auto slot) {
        connect(m_mainForm->action(name), &QAction::triggered, this, slot);
    };
    on("segmentationOpenAction", [this] { loadSegmentation(); });
    on("closeStackAction", [this] { closeStack(); });
    on("closeAllAction", [this] { closeAll(); });
    on("fileExitAction", [this] { m_mainForm->close(); });
    on("editCopyAction", [this] { copyPicture(); });
    on("stretchToUsedBitsAction", [this](bool checked) { stretchToUsedBits(checked); });
    on("editPreferencesAction", [this] { createPreferencesForm(); });
    on("helpContentsAction", [this] { help(); });
    on("helpAboutAction", [this] { createAboutForm(); });
    on("checkForUpdatesAction", [this] { m_mainForm->checkForUpdates(); });
}

void TirnApplication::buildContextMenu()
{
    // An entry whose form is not there yet stands in its place, disabled.
    const auto entry = [this](const char* text) {
        auto* action = new QAction(tr(text), m_mainForm.get());
        action->setEnabled(false);
        return action;
    };
    const auto use = [this, entry](const char* text, const char* mainAction) {
        QAction* action = entry(text);
        action->setEnabled(true);
        connect(action, &QAction::triggered, m_mainForm->action(mainAction), &QAction::trigger);
        return action;
    };
    ContextMenuActions actions;
    actions.openStack = entry("Open Stack");
    actions.manageStacks = entry("Manage Stacks");
    actions.palettes = entry("Palettes");
    actions.volumes = new QMenu(tr("Volumes"), m_mainForm.get());
    connect(actions.volumes, &QMenu::aboutToShow, this,
            [this, menu = actions.volumes] { buildVolumesMenu(*menu); });
    actions.closeAll = use("Close All", "closeAllAction");
    actions.view = entry("View");
    actions.cutPlanes = entry("Cut Planes");
    actions.renderOptions = entry("Render Options");
    actions.takeSnapshot = entry("Take Snapshot");
    actions.makeMovie = entry("Make Movie");
    actions.help = use("Help", "helpContentsAction");
    actions.capabilities = entry("Video card capabilities");
    actions.about = use("About", "helpAboutAction");
    actions.exit = m_mainForm->action("fileExitAction");
    m_currentWidget->setContextMenuActions(actions);
}

void TirnApplication::buildVolumesMenu(QMenu& menu)
{
    menu.clear();
    for (int i = 0; i < arrayCount(); ++i) {
        QAction* action = menu.addAction(m_scene.arrays[static_cast<std::size_t>(i)]->name());
        action->setCheckable(true);
        action->setChecked(i == m_scene.currentIndex);
        connect(action, &QAction::triggered, this, [this, i] { setCurrentArray(i); });
    }
    if (menu.isEmpty())
        menu.addAction(tr("none"))->setEnabled(false);
}

void TirnApplication::placeMainForm()
{
    const QSize desktop = primaryScreen()->size();
    m_mainForm->adjustSize();
    m_mainForm->move(firstWindowPosition(desktop, kFirstWindowSide));
}

void TirnApplication::createForms()
{
    m_forms.setMainWindow(m_mainForm.get());
    std::vector<FormRow> rows;
    rows.push_back({FormId::About,
                    "About",
                    "About",
                    [this](QWidget* parent) -> QWidget* {
                        m_hidden->makeCurrent();
                        const auto* renderer = reinterpret_cast<const char*>(gl().GetString(GL_RENDERER));
                        return new AboutForm(QString::fromLatin1(renderer), parent);
                    },
                    {},
                    {}});
    rows.push_back({FormId::Preferences,
                    "Preferences",
                    "Preferences",
                    [this](QWidget* parent) -> QWidget* {
                        const auto read = [this] { return PreferencesForm::Shown{m_preferences, m_card}; };
                        return new PreferencesForm(read, parent);
                    },
                    [this](QWidget* form) {
                        connect(static_cast<PreferencesForm*>(form), &PreferencesForm::chosen, this,
                                &TirnApplication::storePreferences);
                    },
                    {}});
    m_forms.setRows(std::move(rows));
    m_forms.createAllHidden();
}

void TirnApplication::createThreads()
{
    LoadReport report;
    report.progress = [this](const QString& message, int value, int total, bool done) {
        postEvent(this, new ProgressEvent(message, value, total, done));
    };
    report.loaded = [this](std::unique_ptr<VoxelArray> array, const std::vector<QStringList>& files) {
        postEvent(this, new StackLoadedEvent(std::move(array), files));
    };
    m_fileThread = std::make_unique<FileThread>(m_hidden->context(), std::move(report));
}

void TirnApplication::readPreferences()
{
    usePreferences(readSettings(*m_settings));
    if (m_preferences.blending == 1)
        m_currentWidget->setBlendMode(GL_MAX);
    m_currentWidget->stopAndWait();
    appendFavoritePalettes(m_scene.palettes, m_preferences.favoritePalettesPath, m_paletteTables.get());
}

void TirnApplication::usePreferences(const Settings& settings)
{
    m_preferences = settings;
    const std::scoped_lock lock(m_scene.mutex);
    m_renderSettings.flashRate = settings.flashRate;
    m_renderSettings.texLimit2D = settings.texLimit2D;
    m_renderSettings.texLimit3D = settings.texLimit3D;
    m_scene.watermark = settings.watermarkText;
}

/// Limits and encoders act on later loads, and a new way to blend from the next start on.
void TirnApplication::storePreferences(const Settings& settings)
{
    usePreferences(settings);
    writePreferences(settings, *m_settings);
    m_settings->sync();
    if (m_settings->status() != QSettings::NoError)
        showWarning("Preferences", "The preferences could not be written to " + m_settings->fileName());
    m_currentWidget->requestFrame();
}

void TirnApplication::start()
{
    readPreferences();
    m_currentWidget->requestFrame();
    loadFromCommandLine(arguments());
}

} // namespace tirn
