#pragma once

#include <functional>
#include <vector>

#include <QAction>
#include <QLabel>
#include <QMainWindow>
#include <QMenu>

#include "volume/voxelarray.h"

namespace tirn {

/// The main window: menus, status bar and the render widget in the middle. Its actions are connected by the
/// application.
class MainForm : public QMainWindow
{
    Q_OBJECT

public:
    explicit MainForm(const QString& name);

    /// An action by its name, null when there is none.
    QAction* action(const QString& name) const;
    /// Asks before a window closes by itself.
    void setCloseHandler(std::function<void()> handler) { m_closeHandler = std::move(handler); }
    /// The widget whose window state decides whether anything is drawn.
    void setMinimisedHandler(std::function<void(bool minimised)> handler)
    {
        m_minimisedHandler = std::move(handler);
    }

public Q_SLOTS:
    /// GL_FUNC_ADD or GL_MAX.
    void updateBlendingStatus(GLint mode);
    /// The target of the current volume; null for none.
    void updateTextureStatus(const tirn::VoxelArray* array);
    void updateMemoryStatus();
    void updateZCorrectionStatus(bool on);
    void checkForUpdates();

protected:
    void changeEvent(QEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    void buildMenus();
    void buildStatusBar();

    QLabel* m_blending;
    QLabel* m_zCorrection;
    QLabel* m_texture;
    QLabel* m_memory;
    std::function<void()> m_closeHandler;
    std::function<void(bool)> m_minimisedHandler;
};

/// The program's memory in whole megabytes.
int processMegabytes();

} // namespace tirn
