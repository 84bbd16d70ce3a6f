#pragma once

#include <functional>

#include <QObject>
#include <QUndoStack>

#include "scene/changes.h"
#include "scene/scene.h"

namespace tirn {

/// The only way to change what a window shows, and the only one who tells of it. Lives on the interface
/// thread, where reading needs no lock, but for what moves by itself while a render thread runs: angles and
/// spin, time points and the displays of channels, which `read` is for.
///
/// A change is a function of the scene. It runs with the scene's lock held, does nothing else, and does not
/// come back here. Whoever shows values of the scene follows `changed`; frames are asked for by themselves.
class SceneModel : public QObject
{
    Q_OBJECT

public:
    using Edit = std::function<void(Scene&)>;
    /// How drawing ends before the lists change, and begins again; while it stands still the card's names may
    /// be made and deleted.
    struct Drawing
    {
        std::function<void()> stop;
        std::function<void()> makeCurrent;
    };

    const Scene& scene() const { return m_scene; }
    /// What a function of the scene gives, with the scene's lock held.
    template <class Function>
    auto read(const Function& function) const
    {
        const std::scoped_lock lock(m_scene.mutex);
        return function(m_scene);
    }
    ViewState view() const
    {
        return read([](const Scene& scene) { return scene.view; });
    }
    /// For render threads and workers, which take the scene's lock themselves.
    Scene& sharedScene() { return m_scene; }
    void setDrawing(Drawing drawing) { m_drawing = std::move(drawing); }

    /// Locks, changes, and tells of it once; of no changes it tells nobody.
    void edit(Changes changes, const Edit& change);
    /// The same while nothing draws, for the number of volumes, palettes and surfaces.
    void editLists(Changes changes, const Edit& change);
    /// The same as `edit`, and can be taken back. Edits in a row with the same gesture, which is not 0, are
    /// taken back as one; `newGesture` gives a number that was never used.
    void editUndoably(const QString& text, int gesture, Changes changes, const Edit& change);
    int newGesture() { return ++m_lastGesture; }
    QUndoStack& undoStack() { return m_undo; }

    /// Tells of what a render thread or a worker has changed. Asks for no frame.
    void follow(Changes changes);
    /// Asks for a frame of the scene as it is.
    void redraw() { Q_EMIT frameNeeded(); }

Q_SIGNALS:
    void changed(tirn::Changes changes);
    /// What is shown differs from what was drawn last.
    void frameNeeded();

private:
    class UndoCommand;

    void apply(const Edit& change);
    void tell(Changes changes);

    Scene m_scene;
    Drawing m_drawing;
    QUndoStack m_undo;
    int m_lastGesture = 0;
};

} // namespace tirn
