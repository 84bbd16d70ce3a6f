#include "app/menus.h"

#include <QMenu>

#include "scene/fitview.h"
#include "scene/sceneedits.h"

namespace tirn {

namespace {

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

/// Actions that a form brings along, by the name that they have there.
struct FormAction
{
    const char* action;
    FormId form;
    const char* there;
};

constexpr FormAction kFormActions[] = {
    {"paletteOpenAction", FormId::Palette, "palLoadAction"},
    {"paletteNewAction", FormId::Palette, "palNew8Action"},
    {"paletteSaveAction", FormId::Palette, "palSaveAction"},
    {"closePaletteAction", FormId::Palette, "palCloseAction"},
};

struct SideAction
{
    const char* action;
    ViewSide side;
};

constexpr SideAction kSideActions[] = {
    {"viewFrontAction", ViewSide::Front}, {"viewBackAction", ViewSide::Back},
    {"viewLeftAction", ViewSide::Left},   {"viewRightAction", ViewSide::Right},
    {"viewTopAction", ViewSide::Top},     {"viewBottomAction", ViewSide::Bottom},
};

/// The context menu in order: forms, actions of the main window under a text of their own, separators, and
/// the list of volumes.
struct ContextRow
{
    enum class Kind { Form, Action, Volumes, Separator };
    Kind kind = Kind::Separator;
    FormId form = FormId::About;
    const char* text = "";
    const char* action = "";
};

constexpr ContextRow formEntry(FormId id) { return {ContextRow::Kind::Form, id, "", ""}; }

constexpr ContextRow actionEntry(const char* text, const char* action)
{
    return {ContextRow::Kind::Action, FormId::About, text, action};
}

constexpr ContextRow kContextMenu[] = {
    actionEntry("Open Stack", "stackOpenAction"),
    formEntry(FormId::Manager),
    formEntry(FormId::Palette),
    {ContextRow::Kind::Volumes, FormId::About, "Volumes", ""},
    actionEntry("Close All", "closeAllAction"),
    {},
    formEntry(FormId::View),
    formEntry(FormId::CutPlanes),
    formEntry(FormId::Renderer),
    {},
    formEntry(FormId::SnapShot),
    formEntry(FormId::MovieMaker),
    {},
    actionEntry("Help", "helpContentsAction"),
    formEntry(FormId::AnalyzeThis),
    actionEntry("About", "helpAboutAction"),
    {},
    actionEntry("", "fileExitAction"),
};

void connectForms(const MenuTargets& targets)
{
    for (const FormRow& row : formRows()) {
        QAction* action = targets.mainForm.action(row.action);
        if (action == nullptr)
            continue;
        FormTable* forms = &targets.forms;
        const FormId id = row.id;
        if (!action->isCheckable()) {
            QObject::connect(action, &QAction::triggered, forms, [forms, id] { forms->create(id, true); });
            continue;
        }
        QObject::connect(action, &QAction::toggled, forms,
                         [forms, id](bool show) { forms->create(id, show); });
        QObject::connect(forms, &FormTable::visibilityChanged, action,
                         [action, id](FormId changed, bool visible) {
                             const QSignalBlocker blocker(action);
                             if (changed == id)
                                 action->setChecked(visible);
                         });
    }
}

void buildVolumesMenu(QMenu& menu, const MenuTargets& targets)
{
    menu.clear();
    const Scene& scene = targets.model.scene();
    StackList* stacks = &targets.stacks;
    for (const auto& array : scene.arrays) {
        QAction* action = menu.addAction(menuText(array->name()));
        action->setCheckable(true);
        action->setChecked(array->id() == scene.currentId());
        QObject::connect(action, &QAction::triggered, stacks,
                         [stacks, id = array->id()] { stacks->makeCurrent(id); });
    }
    if (menu.isEmpty())
        menu.addAction(QMenu::tr("none"))->setEnabled(false);
}

/// An entry whose form is not there stands in its place, disabled.
void addForm(QMenu& menu, FormId id, FormTable& forms)
{
    const FormRow& row = formRow(id);
    QAction* entry = menu.addAction(QMenu::tr(row.contextText));
    entry->setEnabled(row.make != nullptr);
    QObject::connect(entry, &QAction::triggered, &forms, [forms = &forms, id] { forms->create(id, true); });
}

void addAction(QMenu& menu, const ContextRow& row, QAction* action)
{
    if (*row.text == '\0') {
        menu.addAction(action);
        return;
    }
    QAction* entry = menu.addAction(QMenu::tr(row.text));
    // Tests find it, and so does who enables it.
    entry->setObjectName(QString("context_") + row.action);
    QObject::connect(entry, &QAction::triggered, action, &QAction::trigger);
}

} // namespace

void connectActions(const MenuTargets& targets)
{
    MainForm* mainForm = &targets.mainForm;
    const auto on = [mainForm](const char* name, auto slot) {
        QObject::connect(mainForm->action(name), &QAction::triggered, mainForm, slot);
    };
    on("stackOpenAction", [loads = &targets.loads] { loads->chooseStack(); });
    on("sequenceTiffAction", [mainForm] { mainForm->loadSequenceTiff(); });
    on("segmentationOpenAction", [loads = &targets.loads] { loads->chooseSegmentation(); });
    on("closeSegmentationAction", [model = &targets.model] {
        model->editLists(Change::Look, [](Scene& scene) { scene.segmentations.clear(); });
    });
    on("showSegmentationAction", [model = &targets.model](bool shown) {
        model->edit(Change::Look, [=](Scene& scene) {
            if (!scene.segmentations.empty())
                scene.segmentations.back()->visible = shown;
        });
    });
    on("closeStackAction", [stacks = &targets.stacks] { stacks->close(-1); });
    on("closeAllAction", [stacks = &targets.stacks] { stacks->closeAll(); });
    on("printAction", [pictures = &targets.pictures, mainForm] { pictures->printWindow(mainForm); });
    on("fileExitAction", [mainForm] { mainForm->close(); });
    on("editCopyAction", [pictures = &targets.pictures] { pictures->copyWindow(); });
    on("stretchToUsedBitsAction", [model = &targets.model](bool stretches) {
        model->edit(Change::Look, [=](Scene& scene) { scene.view.autoBitDepth = stretches; });
    });
    on("helpContentsAction", [help = targets.help] { help("index.html"); });
    on("checkForUpdatesAction", [mainForm] { mainForm->checkForUpdates(); });
    const auto onView = [&](const char* name, const SceneModel::Edit& change) {
        on(name, [model = &targets.model, change] { model->edit(Change::Pose | Change::Scale, change); });
    };
    onView("fitViewAction", fitView);
    onView("resetViewAction", [settings = &targets.settings](Scene& scene) {
        resetView(scene);
        if (settings->fitOnOpen)
            fitView(scene);
    });
    for (const SideAction& each : kSideActions)
        onView(each.action, [each](Scene& scene) { lookAt(scene.view, each.side); });
    for (const TransformAction& each : kTransformActions)
        on(each.action, [jobs = &targets.jobs, each] { jobs->filter(each.operation); });
    for (const Filter& each : filters()) {
        if (each.action != nullptr)
            on(each.action, [jobs = &targets.jobs, operation = each.operation] { jobs->filter(operation); });
    }
    for (const ExportAction& each : kExportActions)
        on(each.action, [jobs = &targets.jobs, each] { jobs->exportStack(each.mode); });
    for (const FormAction& each : kFormActions)
        on(each.action, [forms = &targets.forms, each] {
            const ToolForm* there = forms->form(each.form);
            if (const ToolForm* form = there != nullptr ? there : forms->create(each.form, false))
                form->findChild<QAction*>(each.there)->trigger();
        });
    connectForms(targets);
}

void fillContextMenu(QMenu& menu, const MenuTargets& targets)
{
    for (const ContextRow& row : kContextMenu) {
        switch (row.kind) {
        case ContextRow::Kind::Separator:
            menu.addSeparator();
            break;
        case ContextRow::Kind::Form:
            addForm(menu, row.form, targets.forms);
            break;
        case ContextRow::Kind::Action:
            addAction(menu, row, targets.mainForm.action(row.action));
            break;
        case ContextRow::Kind::Volumes: {
            QMenu* volumes = menu.addMenu(QMenu::tr(row.text));
            QObject::connect(volumes, &QMenu::aboutToShow, volumes,
                             [volumes, targets] { buildVolumesMenu(*volumes, targets); });
            break;
        }
        }
    }
    QObject::connect(&menu, &QMenu::aboutToShow, &menu, [&menu, model = &targets.model] {
        menu.findChild<QAction*>("context_closeAllAction")->setEnabled(!model->scene().batchMode);
    });
}

} // namespace tirn
