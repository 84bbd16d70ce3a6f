#pragma once

#include <functional>
#include <vector>

#include <QAction>
#include <QLabel>
#include <QMainWindow>
#include <QMenu>

#include "image/imageattributes.h"
#include "scene/scenemodel.h"
#include "session/recentlists.h"
#include "session/settings.h"
#include "threads/probes.h"
#include "ui/main/unsavedform.h"

class QSettings;

class QStackedWidget;

namespace tirn {

struct DroppedNames;

/// What the main window works with. All of it outlives the window.
struct MainFormServices
{
    /// Holds the directories that all file dialogs share.
    Settings& settings;
    QSettings& store;
    SceneModel& model;
    Probes& probes;
};

/// The main window: menus, status bar, the lists of what was opened last, and the render widget in the
/// middle. Files that are dropped on the program arrive here. Its actions are connected by the application.
class MainForm : public QMainWindow
{
    Q_OBJECT

public:
    MainForm(const QString& name, const MainFormServices& services);

    /// An action by its name, null when there is none.
    QAction* action(const QString& name) const;
    /// What is done before the window closes, first of all; false keeps it open.
    void setCloseHandler(std::function<bool()> handler) { m_closeHandler = std::move(handler); }
    /// Stacks whose voxels are others than those of their files.
    void setUnsavedStacks(std::function<std::vector<UnsavedThing>()> stacks)
    {
        m_unsavedStacks = std::move(stacks);
    }
    /// Asked before a command of the undo stack is undone or done again; false leaves it.
    void setUndoGate(std::function<bool(const QUndoCommand*)> gate) { m_undoGate = std::move(gate); }
    /// The widget whose window state decides whether anything is drawn.
    void setMinimisedHandler(std::function<void(bool minimised)> handler)
    {
        m_minimisedHandler = std::move(handler);
    }
    /// Says something in the status bar, for a while.
    void showNote(const QString& text);
    /// What the mouse is over, in the place of the facts; empty for nothing. Notes stand before it.
    void showPointed(const QString& text);
    const RecentLists& recent() const { return m_recent; }
    /// Takes the lists of what was opened last from the store.
    void readRecentLists();
    /// Puts a loaded stack on top of the list.
    void addRecentStack(const RecentStack& stack);

public Q_SLOTS:
    /// GL_FUNC_ADD or GL_MAX.
    void updateBlendingStatus(GLint mode);
    /// The target of the current volume.
    void updateTextureStatus();
    void updateMemoryStatus();
    void updateZCorrectionStatus(bool on);
    void checkForUpdates();
    /// Puts a palette file on top of the list.
    void paletteLoaded(const QString& name);
    /// Asks for the first file of a TIFF series.
    void loadSequenceTiff();

Q_SIGNALS:
    void loadRecentPalette(const QStringList& names);
    void savePalette(tirn::Palette* palette);
    void loadRecentStack(const std::vector<QStringList>& files, int channels, int timePoints);
    /// A stack whose files have no header.
    void loadRecentRaw(const tirn::RecentStack& stack);
    /// Mode 0: for the stack form.
    void loadTiffs(const QString& name, int mode);
    void loadSession(const QString& name);
    /// The window will close, and the settings are being written.
    void closing();

protected:
    void showEvent(QShowEvent* event) override;
    void changeEvent(QEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    void buildMenus();
    void buildStatusBar();
    void buildRecentMenus();
    void follow(Changes changes);
    void followUndo();
    QMenu* listMenu(const char* name) const;
    void recentStack(int position);
    void takeDropped(const DroppedNames& names);
    /// False when the user wants to go on.
    std::vector<UnsavedThing> unsavedThings();
    void writeSettings();

    MainFormServices m_services;
    RecentLists m_recent;
    ProbeQuestion m_dropped;
    QStackedWidget* m_about;
    QLabel* m_facts;
    QLabel* m_pointed;
    QLabel* m_blending;
    QLabel* m_zCorrection;
    QLabel* m_texture;
    QLabel* m_memory;
    std::function<bool()> m_closeHandler;
    std::function<bool(const QUndoCommand*)> m_undoGate;
    std::function<std::vector<UnsavedThing>()> m_unsavedStacks;
    std::function<void(bool)> m_minimisedHandler;
};

/// The program's memory in whole megabytes.
int processMegabytes();

/// A text for a menu: cut in the middle where it is long, and without mnemonics.
QString menuText(const QString& text);

} // namespace tirn
