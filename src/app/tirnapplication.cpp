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

constexpr int kLeastWidgetSide = 128;

} // namespace

TirnApplication::TirnApplication(int& argc, char** argv)
    : QApplication(argc, argv), m_preferences(m_model), m_stacks(m_model, [this] { finishJobs(); }),
      m_renderEvents(*this), m_help(applicationDirPath() + "/docs")
{
    setOrganizationName("Tirn");
    setApplicationName("Tirn2");
    connect(&m_stacks, &StackList::currentArrayChanged, this, &TirnApplication::currentArrayChanged);
    connect(&m_stacks, &StackList::stackClosed, this, &TirnApplication::stackClosed);
}

TirnApplication::~TirnApplication()
{
    finishJobs();
    m_loads.reset();
    if (m_stage != nullptr)
        m_stage->stopDrawing();
    // Events still on their way may hold a volume, which must go while the card is there.
    removePostedEvents(this);
    m_pointing.reset();
    // Its commands know the jobs.
    m_model.undoStack().clear();
    m_jobs.reset();
    m_forms.reset();
    m_mainForm.reset();
    m_stage.reset();
    logDebug("cleaned up after app");
}

TirnApplication& TirnApplication::instance()
{
    return *static_cast<TirnApplication*>(QCoreApplication::instance());
}

bool TirnApplication::initializeGl()
{
    m_stage = WindowStage::probe(m_model);
    if (m_stage == nullptr)
        return false;
    m_mainForm = std::make_unique<MainForm>(
        "Main", MainFormServices{m_preferences.settings(), m_preferences.store(), m_model, m_probes});
    QStackedWidget* widgets = m_stage->createWidgets(m_renderEvents, m_mainForm.get());
    if (widgets == nullptr) {
        waitForMessage(m_mainForm.get(), QMessageBox::Critical, "Unknown Video Card",
                       "Your video card does not appear to be compatible with this software. Sorry.");
        return true;
    }
    m_mainForm->setCentralWidget(widgets);
    createServices();
    connectWidgets();
    m_mainForm->adjustSize();
    m_mainForm->move(firstWindowPosition(primaryScreen()->size(), currentWidget()->minimumWidth()));
    m_mainForm->show();
    for (TirnWidget* widget : windows().widgets())
        widget->setMinimumSize(kLeastWidgetSide, kLeastWidgetSide);
    currentWidget()->setFocus();
    currentWidget()->requestFrame();
    createForms();
    return true;
}

void TirnApplication::createServices()
{
    m_stacks.setPaletteTables(paletteTables());
    Settings& settings = m_preferences.settings();
    const auto form = [this](FormId id, bool show) { return m_forms->needed(id, show); };
    m_loads = std::make_unique<Loads>(
        LoadNeeds{m_model, m_stacks, *m_mainForm, settings, m_probes, *m_stage, form}, *this);
    m_jobs = std::make_unique<Jobs>(m_model, *m_mainForm, settings, *m_stage, *this);
    m_pictures = std::make_unique<Pictures>(m_model, *m_stage, settings);
    const auto keep = [this](const Settings& chosen) {
        const QString error = m_preferences.keep(chosen);
        if (!error.isEmpty())
            showMessage(m_mainForm.get(), QMessageBox::Warning, "Preferences", error);
    };
    m_forms = std::make_unique<FormTable>(
        *m_mainForm,
        FormServices{m_model, *m_loads, m_stacks, m_stacks, *m_jobs, *m_pictures, windows(), m_probes,
                     settings, card(), keep, form, [this](const QString& page) { help(page); }});
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
        m_stage->stopDrawing();
        return m_jobs->mayClose();
    });
    form->setUnsavedStacks([this] { return m_jobs->unsavedStacks(); });
    form->setUndoGate([this](const QUndoCommand* command) { return m_jobs->mayUndo(command); });
    form->setMinimisedHandler([this](bool minimised) {
        if (minimised)
            currentWidget()->stopRendering();
        else
            currentWidget()->requestFrame();
    });
    m_pointing = std::make_unique<PointingTools>(m_model, *form, [this] { return m_jobs->isBusy(); });
    const Settings& settings = m_preferences.settings();
    const MenuTargets targets{*form,    m_model,  m_stacks,
                              *m_loads, *m_jobs,  *m_pictures,
                              *m_forms, settings, [this](const QString& page) { help(page); }};
    connectActions(targets);
    for (TirnWidget* widget : windows().widgets()) {
        connect(widget, &TirnWidget::scaleChanged, this, &TirnApplication::scaleChanged);
        connect(widget, &TirnWidget::arrayRequested, &m_stacks, &StackList::setCurrent);
        connect(widget, &TirnWidget::helpRequested, this, qOverload<const QString&>(&TirnApplication::help));
        connect(widget, &TirnWidget::quitRequested, form, &MainForm::close);
        m_pointing->follow(*widget);
        fillContextMenu(widget->contextMenu(), targets);
    }
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
    m_preferences.read({card().maxTexture2D, card().maxTexture3D});
    // A bar of round length is what users expect of a window.
    m_model.edit(Change::Look, [](Scene& scene) { scene.view.roundScaleBar = true; });
    if (m_preferences.settings().blending == 1)
        currentWidget()->setBlendMode(GL_MAX);
    PaletteList favorites;
    appendFavoritePalettes(favorites, m_preferences.settings().favoritePalettesPath, paletteTables());
    m_stacks.addPalettes(std::move(favorites));
    m_mainForm->readRecentLists();
    m_forms->restore(m_preferences.store());
    currentWidget()->requestFrame();
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
