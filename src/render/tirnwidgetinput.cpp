// Mouse and keyboard of the volume widget.

#include <algorithm>
#include <cmath>

#include <QKeyEvent>
#include <QMouseEvent>
#include <QWheelEvent>

#include "base/log.h"
#include "render/tirnwidget.h"
#include "scene/eyeroom.h"
#include "scene/sceneedits.h"

namespace tirn {

namespace {

constexpr double kWheelFactor = 1.05;
constexpr double kKeyScaleStep = 0.01;
/// Slower than this many pixels a frame, a released volume stays where it is.
constexpr double kThrowThreshold = 2;
/// Milliseconds after the last motion for which a released volume still counts as thrown.
constexpr unsigned long kThrowDelay = 100;
/// A hand does not hold still: moved by up to so many pixels it is still a click.
constexpr int kClickReach = 3;

enum class CharacterAction {
    None,
    AdvancedMovie,
    ShowFrameRate,
    HideFrameRate,
    MaximumIntensity,
    AlphaBlend,
    ShowOrientation,
    HideOrientation,
    Rebuild,
    GrowX,
    ShrinkX,
    GrowY,
    ShrinkY,
    GrowZ,
    ShrinkZ,
};

struct CharacterRow
{
    char character;
    const char* log;
    CharacterAction action;
};

/// Many keys only log: they are kept for the future.
constexpr CharacterRow kCharacters[] = {
    {'!', "some weird test", CharacterAction::None},
    {'A', "set mode alpha palette", CharacterAction::None},
    {'a', "clear mode alpha palette", CharacterAction::None},
    {'B', "edit blue palette", CharacterAction::None},
    {'b', "clear blue palette", CharacterAction::None},
    {'C', "start screen capture", CharacterAction::None},
    {'c', "stop screen capture", CharacterAction::AdvancedMovie},
    {'D', "dump movie to disk", CharacterAction::None},
    {'d', "stop movie", CharacterAction::None},
    {'E', "palette histo 1?", CharacterAction::None},
    {'e', "palette histo 0?", CharacterAction::None},
    {'F', "show frame rate", CharacterAction::ShowFrameRate},
    {'f', "hide frame rate", CharacterAction::HideFrameRate},
    {'G', "edit green palette", CharacterAction::None},
    {'g', "clear green palette", CharacterAction::None},
    {'H', "palette histo 2?", CharacterAction::None},
    {'h', "palette histo 2?", CharacterAction::None},
    {'I', "insert movie frame", CharacterAction::None},
    {'i', "movie mode something", CharacterAction::None},
    {'L', "load logo", CharacterAction::None},
    {'l', "unload logo ???", CharacterAction::None},
    {'M', "max intensity", CharacterAction::MaximumIntensity},
    {'m', "alpha blend", CharacterAction::AlphaBlend},
    {'O', "edit alpha palette", CharacterAction::ShowOrientation},
    {'o', "clear alpha palette", CharacterAction::HideOrientation},
    {'P', "play movie", CharacterAction::None},
    {'p', "stop movie", CharacterAction::None},
    {'R', "force renderlist rebuild", CharacterAction::Rebuild},
    {'r', "clear red palette", CharacterAction::None},
    {'S', "stereo mode", CharacterAction::None},
    {'s', "disable stereo mode", CharacterAction::None},
    {'T', "toggle channel", CharacterAction::None},
    {'t', "stop toggling channel", CharacterAction::None},
    {'W', "no clue ???", CharacterAction::None},
    {'w', "no clue ???", CharacterAction::None},
    {'X', "increase x scale", CharacterAction::GrowX},
    {'x', "decrease x scale", CharacterAction::ShrinkX},
    {'Y', "increase y scale", CharacterAction::GrowY},
    {'y', "decrease y scale", CharacterAction::ShrinkY},
    {'Z', "increase z scale", CharacterAction::GrowZ},
    {'z', "decrease z scale", CharacterAction::ShrinkZ},
};

/// Arrow keys: a degree a press; with Shift about z.
struct ArrowRow
{
    int key;
    double delta;
    int axis;
};
constexpr ArrowRow kArrows[] = {
    {Qt::Key_Left, -1, 1}, {Qt::Key_Right, 1, 1}, {Qt::Key_Up, -1, 0}, {Qt::Key_Down, 1, 0}};

} // namespace

bool TirnWidget::acceptsInput() const { return !scene().batchMode && scene().current() != nullptr; }

void TirnWidget::mousePressEvent(QMouseEvent* event)
{
    raise();
    m_pressedAt = event->pos();
    Q_EMIT hoverEnded();
    const bool isLeft = event->button() == Qt::LeftButton && event->modifiers() == Qt::NoModifier;
    if (isLeft && acceptsInput() &&
        m_cutHandles.press(devicePixel(event->pos()), m_surface.size(), m_surface.pixelRatio())) {
        m_model.edit({}, [](Scene& scene) { stopSpin(scene.view); });
        return;
    }
    const bool drags =
        !scene().batchMode && (event->button() == Qt::LeftButton || event->button() == Qt::MiddleButton);
    m_model.edit({}, [drags](Scene& scene) {
        stopSpin(scene.view);
        scene.view.dragging = scene.view.dragging || drags;
    });
    if (drags)
        m_lastMouse = event->pos();
    if (event->button() == Qt::RightButton)
        m_contextMenu.popup(mapToGlobal(event->pos()));
}

void TirnWidget::mouseReleaseEvent(QMouseEvent* event)
{
    if (scene().batchMode)
        return;
    m_lastMouse = event->pos();
    if (m_cutHandles.isDragging() && event->button() == Qt::LeftButton) {
        m_cutHandles.release();
        return;
    }
    const bool moves = event->timestamp() - m_lastMotion <= kThrowDelay;
    bool thrown = false;
    m_model.edit({}, [&](Scene& scene) {
        ViewState& view = scene.view;
        view.dragging = false;
        thrown = moves && std::hypot(view.spinX, view.spinY, view.spinZ) > kThrowThreshold;
        if (!thrown)
            stopSpin(view);
    });
    if (thrown)
        requestFrame();
    const bool isClick = (event->pos() - m_pressedAt).manhattanLength() <= kClickReach;
    if (isClick && event->button() == Qt::LeftButton && scene().view.isMeasuring)
        Q_EMIT clicked(devicePixel(event->pos()));
}

void TirnWidget::mouseMoveEvent(QMouseEvent* event)
{
    if (m_cutHandles.isDragging())
        m_cutHandles.move(devicePixel(event->pos()));
    else if (event->buttons() == Qt::NoButton)
        hover(event->pos());
    else
        dragVolume(event);
}

void TirnWidget::leaveEvent(QEvent* event)
{
    Q_EMIT hoverEnded();
    QWidget::leaveEvent(event);
}

void TirnWidget::hover(QPoint at)
{
    const bool isOver = m_cutHandles.isOver(devicePixel(at), m_surface.size(), m_surface.pixelRatio());
    if (isOver != (cursor().shape() == Qt::PointingHandCursor))
        setCursor(isOver ? Qt::PointingHandCursor : Qt::ArrowCursor);
    Q_EMIT hovered(devicePixel(at));
}

void TirnWidget::dragVolume(QMouseEvent* event)
{
    const bool left = (event->buttons() & Qt::LeftButton) != 0;
    const bool middle = (event->buttons() & Qt::MiddleButton) != 0;
    if (!acceptsInput() || (!left && !middle))
        return;
    const QPoint moved = event->pos() - m_lastMouse;
    const double dx = static_cast<double>(moved.x()) / std::max(1, width());
    const double dy = static_cast<double>(moved.y()) / std::max(1, height());
    const bool shift = (event->modifiers() & Qt::ShiftModifier) != 0;
    const bool control = (event->modifiers() & Qt::ControlModifier) != 0;
    m_lastMotion = event->timestamp();
    if (left && shift) {
        move(dx, -dy, 0);
    } else if (left && control) {
        scale(-dy, 1);
        scale(dx, 0);
    } else if (left) {
        rotate(dy * 180, 0);
        rotate(dx * 180, 1);
        m_model.edit({}, [moved](Scene& scene) {
            scene.view.spinX = -moved.x();
            scene.view.spinY = -moved.y();
        });
    } else if (shift) {
        move(0, 0, dx + dy);
    } else if (control) {
        scale(dx + dy, 2);
    } else {
        rotate((dx + dy) * 180, 2);
        m_model.edit({}, [moved](Scene& scene) { scene.view.spinZ = -moved.x() - moved.y(); });
    }
    m_lastMouse = event->pos();
}

/// Along the volume's axes, unless the user prefers the screen's.
void TirnWidget::move(double x, double y, double z)
{
    m_model.edit(Change::Pose, [=](Scene& scene) {
        if (scene.settings.moveAlongScreen) {
            translateOnScreen(scene.view, x, y, z);
            return;
        }
        scene.view.transX += x;
        scene.view.transY += y;
        scene.view.transZ += z;
    });
    emitTranslation();
}

void TirnWidget::wheelEvent(QWheelEvent* event)
{
    if (!acceptsInput())
        return;
    const double asked = std::pow(kWheelFactor, event->angleDelta().y() / 120.0);
    m_model.edit(Change::Scale, [asked](Scene& scene) {
        VoxelArray& array = *scene.current();
        const double most = std::max(1.0, growthBeforeEyes(scene.view, scene.drawnScale(), array.geometry()));
        const double factor = std::min(asked, most);
        setScale(array, array.scale * factor);
    });
    emitScale();
    event->accept();
}

void TirnWidget::keyPressEvent(QKeyEvent* event)
{
    const Qt::KeyboardModifiers modifiers = event->modifiers();
    if (event->key() == Qt::Key_S && (modifiers & Qt::AltModifier) != 0 &&
        (modifiers & Qt::ShiftModifier) != 0) {
        Q_EMIT shaderEditorRequested();
        return;
    }
    if (handleKey(event->key(), (modifiers & Qt::ShiftModifier) != 0))
        return;
    if (event->text().size() == 1)
        handleCharacter(event->text().front());
    else
        QWidget::keyPressEvent(event);
}

bool TirnWidget::handleKey(int key, bool shift)
{
    for (const ArrowRow& row : kArrows) {
        if (row.key == key) {
            rotate(row.delta, shift ? 2 : row.axis);
            return true;
        }
    }
    switch (key) {
    case Qt::Key_F1:
        Q_EMIT helpRequested("help.html");
        return true;
    case Qt::Key_Escape:
        if (scene().view.isMeasuring)
            Q_EMIT measuringEnded();
        else
            Q_EMIT quitRequested();
        return true;
    case Qt::Key_BracketLeft:
        logDebug("previous stack");
        stepArray(-1);
        return true;
    case Qt::Key_BracketRight:
        logDebug("next stack");
        stepArray(1);
        return true;
    case Qt::Key_Plus:
        stepTimePoint(1);
        return true;
    case Qt::Key_Minus:
        stepTimePoint(-1);
        return true;
    default:
        return false;
    }
}

void TirnWidget::stepArray(int direction)
{
    const int count = static_cast<int>(scene().arrays.size());
    if (count > 1)
        Q_EMIT arrayRequested((scene().currentIndex + direction + count) % count);
}

void TirnWidget::stepTimePoint(int direction)
{
    if (scene().current() == nullptr)
        return;
    int before = 0;
    int after = 0;
    m_model.edit(Change::TimePoint, [&](Scene& scene) {
        VoxelArray& array = *scene.current();
        before = array.timePoint();
        array.setTimePoint(before + direction);
        after = array.timePoint();
    });
    logDebug("moving array %d to time_point %d", scene().currentIndex, after);
    if (after != before)
        Q_EMIT timePointChanged();
}

void TirnWidget::handleCharacter(QChar character)
{
    const auto row =
        std::find_if(std::begin(kCharacters), std::end(kCharacters), [character](const CharacterRow& each) {
            return QLatin1Char(each.character) == character;
        });
    if (row == std::end(kCharacters))
        return;
    if (row->action == CharacterAction::AdvancedMovie)
        Q_EMIT advancedMovieRequested();
    logDebug("%s", row->log);
    const auto look = [this](bool ViewState::*member, bool on) {
        m_model.edit(Change::Look, [=](Scene& scene) { scene.view.*member = on; });
    };
    switch (row->action) {
    case CharacterAction::None:
    case CharacterAction::AdvancedMovie:
        break;
    case CharacterAction::ShowFrameRate:
    case CharacterAction::HideFrameRate:
        look(&ViewState::showFrameRate, row->action == CharacterAction::ShowFrameRate);
        break;
    case CharacterAction::MaximumIntensity:
        setBlendMode(GL_MAX);
        break;
    case CharacterAction::AlphaBlend:
        setBlendMode(GL_FUNC_ADD);
        break;
    case CharacterAction::ShowOrientation:
    case CharacterAction::HideOrientation:
        look(&ViewState::drawOrientation, row->action == CharacterAction::ShowOrientation);
        break;
    case CharacterAction::Rebuild:
        m_renderThread->forceRebuild = true;
        requestFrame();
        break;
    case CharacterAction::GrowX:
        scale(kKeyScaleStep, 0);
        break;
    case CharacterAction::ShrinkX:
        scale(-kKeyScaleStep, 0);
        break;
    case CharacterAction::GrowY:
        scale(kKeyScaleStep, 1);
        break;
    case CharacterAction::ShrinkY:
        scale(-kKeyScaleStep, 1);
        break;
    case CharacterAction::GrowZ:
        scale(kKeyScaleStep, 2);
        break;
    case CharacterAction::ShrinkZ:
        scale(-kKeyScaleStep, 2);
        break;
    }
}

} // namespace tirn
