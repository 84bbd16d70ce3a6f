// The forms, and the actions that lead to them.

#include <QMenu>

#include "app/tirnapplication.h"
#include "ui/aboutform.h"
#include "ui/importstackform.h"
#include "ui/managerform.h"
#include "ui/preferencesform.h"
#include "ui/sequencetiffform.h"
#include "ui/stackopenform.h"

namespace tirn {

namespace {

/// The actions that show and hide a form.
struct WindowAction
{
    const char* action;
    FormId form;
};

struct TransformAction
{
    const char* action;
    FilterOperation operation;
};

constexpr TransformAction kTransformActions[] = {
    {"flipXAction", FilterOperation::FlipX},
    {"flipYAction", FilterOperation::FlipY},
    {"flipZAction", FilterOperation::FlipZ},
    {"invertAction", FilterOperation::Invert},
};

/// By what the entries are called.
struct ExportAction
{
    const char* action;
    ExportMode mode;
};

constexpr ExportAction kExportActions[] = {
    {"fileSaveCoreAction", ExportMode::Core},
    {"fileSaveZAction", ExportMode::ZCorrected},
    {"fileSaveAllAction", ExportMode::AllChanges},
};

constexpr WindowAction kWindowActions[] = {
    {"windowStack_ManagerAction", FormId::Manager},
};

} // namespace

void TirnApplication::connectActions()
{
    const auto on = [this](const char* name, auto slot) {
        connect(m_mainForm->action(name), &QAction::triggered, this, slot);
    };
    on("stackOpenAction", [this] { loadStack(); });
    on("importStackAction", [this] { createImportStackForm(); });
    on("sequenceTiffAction", [this] { m_mainForm->loadSequenceTiff(); });
    on("segmentationOpenAction", [this] { loadSegmentation(); });
    on("closeStackAction", [this] { closeStack(); });
    on("closeAllAction", [this] { closeAll(); });
    on("printAction", [this] { print(); });
    on("fileExitAction", [this] { m_mainForm->close(); });
    on("editCopyAction", [this] { copyPicture(); });
    on("stretchToUsedBitsAction", [this](bool checked) { stretchToUsedBits(checked); });
    on("editPreferencesAction", [this] { createPreferencesForm(); });
    on("helpContentsAction", [this] { help(); });
    on("helpAboutAction", [this] { createAboutForm(); });
    on("checkForUpdatesAction", [this] { m_mainForm->checkForUpdates(); });
    for (const TransformAction& each : kTransformActions)
        on(each.action, [this, each] { filter(each.operation); });
    for (const Filter& each : filters()) {
        if (each.action != nullptr)
            on(each.action, [this, operation = each.operation] { filter(operation); });
    }
    for (const ExportAction& each : kExportActions)
        on(each.action, [this, each] { exportStack(each.mode); });
    for (const WindowAction& each : kWindowActions) {
        QAction* action = m_mainForm->action(each.action);
        connect(action, &QAction::toggled, this,
                [this, each](bool show) { m_forms.create(each.form, show); });
        connect(&m_forms, &FormTable::visibilityChanged, action, [action, each](FormId id, bool visible) {
            const QSignalBlocker blocker(action);
            if (id == each.form)
                action->setChecked(visible);
        });
    }
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
    actions.openStack = use("Open Stack", "stackOpenAction");
    actions.manageStacks = entry("Manage Stacks");
    actions.manageStacks->setEnabled(true);
    connect(actions.manageStacks, &QAction::triggered, this, [this] { createManagerForm(); });
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

void TirnApplication::createForms()
{
    m_forms.setMainWindow(m_mainForm.get());
    // In the order in which they are made.
    m_forms.setRows(
        {stackRow(), aboutRow(), importStackRow(), managerRow(), preferencesRow(), sequenceTiffRow()});
    m_forms.createAllHidden();
}

FormRow TirnApplication::aboutRow()
{
    const auto make = [this](QWidget* parent) -> QWidget* {
        m_hidden->makeCurrent();
        const auto* renderer = reinterpret_cast<const char*>(gl().GetString(GL_RENDERER));
        return new AboutForm(QString::fromLatin1(renderer), parent);
    };
    return {FormId::About, "About", "About", make, {}, {}};
}

FormRow TirnApplication::managerRow()
{
    const auto make = [this](QWidget* parent) -> QWidget* {
        ManagerServices services{m_scene,
                                 [this]() -> TirnWidget& { return *m_currentWidget; },
                                 [this](int index) { return setCurrentArray(index); },
                                 [this](int index) { closeStack(index); },
                                 [this] { loadStack(); },
                                 {}};
        return new ManagerForm(std::move(services), parent);
    };
    const auto connectForm = [this](QWidget* form) {
        auto* manager = static_cast<ManagerForm*>(form);
        connect(m_currentWidget, &TirnWidget::timePointChanged, manager, &ManagerForm::timePointChanged);
        connect(this, &TirnApplication::currentArrayChanged, manager, &ManagerForm::currentArrayChanged);
        connect(this, &TirnApplication::paletteListChanged, manager, &ManagerForm::paletteListChanged);
        connect(manager, &ManagerForm::scaleChanged, this, &TirnApplication::scaleChanged);
    };
    return {FormId::Manager, "Manager", "Manager", make, connectForm, {}};
}

FormRow TirnApplication::preferencesRow()
{
    const auto make = [this](QWidget* parent) -> QWidget* {
        const auto read = [this] { return PreferencesForm::Shown{m_preferences, m_card}; };
        return new PreferencesForm(read, parent);
    };
    const auto connectForm = [this](QWidget* form) {
        connect(static_cast<PreferencesForm*>(form), &PreferencesForm::chosen, this,
                &TirnApplication::storePreferences);
    };
    return {FormId::Preferences, "Preferences", "Preferences", make, connectForm, {}};
}

OpenServices TirnApplication::openServices()
{
    return {[this]() -> LoadDescription& { return m_fileThread->description(); },
            [this] { return startLoad(); }, m_preferences, m_card};
}

FormRow TirnApplication::stackRow()
{
    const auto make = [this](QWidget* parent) { return new StackOpenForm(openServices(), parent); };
    const auto connectForm = [this](QWidget* form) {
        connect(m_mainForm.get(), &MainForm::loadRecentStack, static_cast<StackOpenForm*>(form),
                &StackOpenForm::buildFileList_knownList);
    };
    return {FormId::Stack, "StackOpen", "Stack Open", make, connectForm, {}};
}

StackOpenForm& TirnApplication::stackOpenForm()
{
    // One that is open stays open.
    QWidget* form = m_forms.form(FormId::Stack);
    return *static_cast<StackOpenForm*>(form != nullptr ? form : m_forms.create(FormId::Stack, false));
}

FormRow TirnApplication::importStackRow()
{
    const auto make = [this](QWidget* parent) { return new ImportStackForm(openServices(), parent); };
    return {FormId::ImportStack, "Import", "Import Stack", make, {}, {}};
}

FormRow TirnApplication::sequenceTiffRow()
{
    const auto make = [this](QWidget* parent) { return new SequenceTiffForm(openServices(), parent); };
    const auto connectForm = [this](QWidget* form) {
        auto* sequence = static_cast<SequenceTiffForm*>(form);
        connect(sequence, &SequenceTiffForm::setupTiff, &stackOpenForm(), &StackOpenForm::setupTiff);
        connect(m_mainForm.get(), &MainForm::loadTiffs, sequence, &SequenceTiffForm::setFilename);
    };
    return {FormId::SequenceTiff, "Sequence Tiff", "Sequence Tiff", make, connectForm, {FormId::Stack}};
}

ManagerForm* TirnApplication::managerForm() const
{
    return static_cast<ManagerForm*>(m_forms.form(FormId::Manager));
}

} // namespace tirn
