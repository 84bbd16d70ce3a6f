// Start and end of the program.

#include "app/tirnapplication.h"

#include <QFileInfo>
#include <QMessageBox>
#include <QScreen>
#include <QStatusBar>

#include "base/log.h"
#include "palettes/palettelist.h"
#include "ui/jobprogressform.h"
#include "ui/palettesaving.h"

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
    colourInputs();
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
    if (m_filterThread != nullptr)
        finishJobs();
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
    m_filterThread.reset();
    m_saveThread.reset();
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
    m_mainForm = std::make_unique<MainForm>("Main", MainFormServices{m_preferences, *m_settings, m_scene});
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
        form->setStackPresent(m_scene.current() != nullptr);
    });
    connect(this, &TirnApplication::stackClosed, form, &MainForm::updateMemoryStatus);
    connect(this, &TirnApplication::updateMemoryStatus, form, &MainForm::updateMemoryStatus);
    connect(form, &MainForm::loadRecentPalette, this, &TirnApplication::loadPalettes);
    connect(form, &MainForm::savePalette, this,
            [this](Palette* palette) { savePalette(*palette, m_preferences, m_mainForm.get()); });
    connect(form, &MainForm::loadSession, this, &TirnApplication::loadSession);
    connect(widget, &TirnWidget::scaleChanged, this, &TirnApplication::scaleChanged);
    connect(widget, &TirnWidget::arrayRequested, this, &TirnApplication::setCurrentArray);
    connect(widget, &TirnWidget::helpRequested, this, qOverload<const QString&>(&TirnApplication::help));
    connect(widget, &TirnWidget::quitRequested, this, [] { QCoreApplication::exit(0); });
    form->setCloseHandler([this] {
        m_currentWidget->stopAndWait();
        return mayClose();
    });
    form->setMinimisedHandler([this](bool minimised) {
        if (minimised)
            m_currentWidget->stopRendering();
        else
            m_currentWidget->requestFrame();
    });
}

void TirnApplication::placeMainForm()
{
    const QSize desktop = primaryScreen()->size();
    m_mainForm->adjustSize();
    m_mainForm->move(firstWindowPosition(desktop, kFirstWindowSide));
}

void TirnApplication::createThreads()
{
    LoadReport report;
    report.progress = [this](const QString& message, int value, int total, bool done) {
        postEvent(this, new ProgressEvent(message, value, total, done));
    };
    report.loaded = [this](LoadedStack stack) { postEvent(this, new StackLoadedEvent(std::move(stack))); };
    m_fileThread = std::make_unique<FileThread>(m_hidden->context(), std::move(report));
    createJobThreads();
}

bool TirnApplication::mayClose()
{
    if (m_saveThread == nullptr || !m_saveThread->isBusy())
        return true;
    m_mainForm->statusBar()->showMessage("A stack is still being written.");
    m_exportProgress->raise();
    m_exportProgress->activateWindow();
    return false;
}

void TirnApplication::readPreferences()
{
    usePreferences(readSettings(*m_settings));
    if (m_preferences.blending == 1)
        m_currentWidget->setBlendMode(GL_MAX);
    m_currentWidget->stopAndWait();
    appendFavoritePalettes(m_scene.palettes, m_preferences.favoritePalettesPath, m_paletteTables.get());
    m_mainForm->readRecentLists();
}

void TirnApplication::usePreferences(const Settings& settings)
{
    m_preferences = settings;
    m_fileThread->description().setDefaultEncode(settings.defaultEncode);
    const std::scoped_lock lock(m_scene.mutex);
    m_renderSettings.flashRate = settings.flashRate;
    m_renderSettings.texLimit2D = settings.texLimit2D;
    m_renderSettings.texLimit3D = settings.texLimit3D;
    m_scene.watermark = settings.watermarkText;
}

/// Limits and encoders act on later loads, and a new way to blend from the next start on.
void TirnApplication::storePreferences(const Settings& settings)
{
    // The directories moved on while the form was open.
    Settings chosen = settings;
    chosen.stackPath = m_preferences.stackPath;
    chosen.palettePath = m_preferences.palettePath;
    usePreferences(chosen);
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
