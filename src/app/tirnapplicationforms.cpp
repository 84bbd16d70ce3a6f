// The forms, and the actions that lead to them.

#include <QMenu>

#include "app/tirnapplication.h"
#include "ui/aboutform.h"
#include "ui/importstackform.h"
#include "ui/preferencesform.h"
#include "ui/sequencetiffform.h"
#include "ui/stackopenform.h"

namespace tirn {

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

OpenServices TirnApplication::openServices()
{
    return {[this]() -> LoadDescription& { return m_nextLoad; }, [this] { return startDescribedLoad(); },
            m_preferences, m_card};
}

/// What the next load is to make goes to the file thread.
bool TirnApplication::startDescribedLoad()
{
    LoadRequest request;
    for (const QStringList& element : std::exchange(m_nextLoad, LoadDescription()).filesToLoad)
        request.names += element;
    request.options = {m_currentWidget->threadKind(), m_renderSettings.texLimit2D,
                       m_renderSettings.texLimit3D, false, m_curveTextures.get()};
    request.paletteCount = arrayCount();
    return m_fileThread->load(std::move(request));
}

/// The forms that open stacks.
std::vector<FormRow> TirnApplication::openFormRows()
{
    std::vector<FormRow> rows;
    rows.push_back({FormId::Stack,
                    "StackOpen",
                    "Stack Open",
                    [this](QWidget* parent) { return new StackOpenForm(openServices(), parent); },
                    {},
                    {}});
    rows.push_back({FormId::ImportStack,
                    "Import",
                    "Import Stack",
                    [this](QWidget* parent) { return new ImportStackForm(openServices(), parent); },
                    {},
                    {}});
    rows.push_back({FormId::SequenceTiff,
                    "Sequence Tiff",
                    "Sequence Tiff",
                    [this](QWidget* parent) { return new SequenceTiffForm(openServices(), parent); },
                    [this](QWidget* form) {
                        connect(static_cast<SequenceTiffForm*>(form), &SequenceTiffForm::setupTiff,
                                static_cast<StackOpenForm*>(m_forms.form(FormId::Stack)),
                                &StackOpenForm::setupTiff);
                    },
                    {FormId::Stack}});
    return rows;
}

void TirnApplication::createForms()
{
    m_forms.setMainWindow(m_mainForm.get());
    std::vector<FormRow> rows = openFormRows();
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

} // namespace tirn
