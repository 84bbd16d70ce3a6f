#pragma once

#include <memory>

#include <QPointer>
#include <QStackedWidget>

#include "app/renderwindows.h"
#include "gl/gltables.h"
#include "render/tirnwidget.h"

namespace tirn {

/// All that drawing in the main window needs: the context that all others share their names with, what the
/// card can do, programs, tables of colours and curves, and the widgets that show the picture.
class WindowStage
{
public:
    /// Ends the program where the card gives no context. Null when the toolkit has no OpenGL.
    static std::unique_ptr<WindowStage> probe(SceneModel& model);
    ~WindowStage();
    WindowStage(const WindowStage&) = delete;
    WindowStage& operator=(const WindowStage&) = delete;

    /// Makes the widgets, which belong to `parent`. Null when no driver can draw a volume in a window.
    QStackedWidget* createWidgets(RenderEvents& events, QWidget* parent);
    /// The widget in use, null while there is none.
    const QPointer<TirnWidget>& currentWidget() const { return m_currentWidget; }
    RenderWindows& windows() { return *m_windows; }
    /// Ends drawing for as long as somebody changes what is there to draw.
    void stopDrawing();
    void makeCurrent() { m_hidden->makeCurrent(); }

    HiddenContext& hidden() { return *m_hidden; }
    GlInfo& glInfo() { return *m_glInfo; }
    const GlCapabilities& card() const { return m_card; }
    Shaders& shaders() { return *m_shaders; }
    RenderLock& renderLock() { return m_renderLock; }
    RenderThreadKind threadKind() const { return m_currentWidget->threadKind(); }
    PaletteTables& paletteTables() { return *m_paletteTables; }
    CurveTextures& curveTextures() { return *m_curveTextures; }

private:
    WindowStage(SceneModel& model, std::unique_ptr<HiddenContext> hidden);

    SceneModel& m_model;
    RenderLock m_renderLock;
    std::unique_ptr<HiddenContext> m_hidden;
    std::unique_ptr<GlInfo> m_glInfo;
    GlCapabilities m_card;
    std::unique_ptr<Shaders> m_shaders;
    std::unique_ptr<GlPaletteTables> m_paletteTables;
    std::unique_ptr<GlCurveTextures> m_curveTextures;
    QPointer<TirnWidget> m_currentWidget;
    std::unique_ptr<RenderWindows> m_windows;
};

} // namespace tirn
