#pragma once

#include <memory>

#include <QMenu>
#include <QTimer>
#include <QWidget>

#include "gl/glcontext.h"
#include "gl/glinfo.h"
#include "render/glthread.h"
#include "render/windowsurface.h"
#include "scene/pointing/cuthandletool.h"
#include "scene/scenemodel.h"

namespace tirn {

/// What a widget draws with. All of it outlives the widget.
struct WidgetServices
{
    const GlCapabilities& card;
    SceneModel& model;
    Shaders& shaders;
    RenderLock& renderLock;
    RenderEvents& events;
    /// The context whose names the widget shares.
    HiddenContext& hidden;
};

/// The GL window. It never paints by itself: whatever changes the picture changes the model, which asks for a
/// frame, and the render thread draws it.
class TirnWidget : public QWidget
{
    Q_OBJECT

public:
    /// `stereo` asks for a window with a picture for each eye.
    TirnWidget(const QString& name, const WidgetServices& services, bool stereo, QWidget* parent);
    ~TirnWidget() override;

    RenderThreadKind threadKind() const { return m_threadKind; }
    GLThread& renderThread() { return *m_renderThread; }
    WindowSurface& surface() { return m_surface; }
    /// Comes up where the right button is pressed.
    QMenu& contextMenu() { return m_contextMenu; }

    void requestFrame();
    void stopRendering();
    /// Stops the spin and the render thread, and waits for it.
    void stopAndWait();
    /// Takes the program that the volume asks for in place of a typed one. Returns false.
    bool requestShaderRebuild();
    void setBlendMode(GLenum mode);
    void setProjection(const OrthoBounds& bounds);
    void resetView();
    /// Emits the current values again.
    void syncView();

    void rotate(double delta, int axis);
    void scale(double delta, int axis);
    void translate(double delta, int axis);

    QPaintEngine* paintEngine() const override { return nullptr; }

public Q_SLOTS:
    void loadFrame(const tirn::KeyFrame& frame);
    void changeWindowDimensions(int width, int height);
    void toggleWindowAspectRatio(bool on);
    void changeVoxelScale(double x, double y, double z);
    void changeXScale(double x);
    void changeYScale(double y);
    void changeZScale(double z);
    void changeVoxelTranslation(double x, double y, double z);
    void changeVoxelRotation(double x, double y, double z);
    void showBoundingBox(bool on);
    void showScaleBar(bool on);

Q_SIGNALS:
    void windowDimensionsChanged(int width, int height);
    void modeChanged(GLint mode);
    void scaleChanged(double x, double y, double z);
    void rotationChanged(double x, double y, double z);
    void translationChanged(double x, double y, double z);
    void timePointChanged();
    /// The mouse is over this device pixel without a button, or no longer: it has left, or a button is
    /// pressed.
    void hovered(QPointF pixel);
    void hoverEnded();
    /// The left button was pressed and let go at one place, while clicks measure; and Escape was pressed.
    void clicked(QPointF pixel);
    void measuringEnded();
    /// What keys ask of the rest of the program.
    void arrayRequested(int index);
    void helpRequested(const QString& page);
    void quitRequested();
    void shaderEditorRequested();
    void advancedMovieRequested();

protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    bool acceptsInput() const;
    QPointF devicePixel(QPoint at) const { return QPointF(at) * m_surface.pixelRatio(); }
    void hover(QPoint at);
    void dragVolume(QMouseEvent* event);
    const Scene& scene() const { return m_model.scene(); }
    bool handleKey(int key, bool shift);
    void handleCharacter(QChar character);
    void stepArray(int direction);
    void stepTimePoint(int direction);
    void scaleAxis(int axis, double value);
    void emitScale();
    void emitRotation();
    void emitTranslation();
    void move(double x, double y, double z);
    void keepRatio();

    SceneModel& m_model;
    HiddenContext& m_hidden;
    WindowSurface m_surface;
    RenderThreadKind m_threadKind;
    std::unique_ptr<GLThread> m_renderThread;
    QMenu m_contextMenu;
    CutHandleTool m_cutHandles;
    QPoint m_lastMouse;
    /// When the mouse moved the volume last, on the clock of the window system, in milliseconds.
    unsigned long m_lastMotion = 0;
    QPoint m_pressedAt;
    bool m_preserveWindowRatio = false;
    float m_windowRatioWidth = 0;
    float m_windowRatioHeight = 0;
    /// The size that the user's next one is compared with.
    QSize m_keptSize;
    /// Runs out once the window has come to rest.
    QTimer m_ratioTimer;
};

/// The size that a window takes when `wanted` is asked for and the ratio of `ratio` is kept; `old` tells
/// which side was changed.
QSize sizeWithRatio(QSize wanted, QSize old, double ratioWidth, double ratioHeight);

} // namespace tirn
