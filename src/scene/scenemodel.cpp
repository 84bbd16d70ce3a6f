#include "scene/scenemodel.h"

#include "scene/scenevalues.h"

namespace tirn {

/// The values before and after an edit, or after a row of edits of one gesture.
class SceneModel::UndoCommand : public QUndoCommand
{
public:
    UndoCommand(SceneModel& model, const QString& text, int gesture, Changes changes, SceneValues before,
                SceneValues after)
        : QUndoCommand(text), m_model(model), m_gesture(gesture), m_changes(changes),
          m_before(std::move(before)), m_after(std::move(after))
    {}

    // Only gestures merge.
    int id() const override { return m_gesture != 0 ? 1 : -1; }
    void undo() override { put(m_before); }
    void redo() override
    {
        // The edit was made before it came here.
        if (m_isDone)
            put(m_after);
        m_isDone = true;
    }
    bool mergeWith(const QUndoCommand* other) override
    {
        const auto& next = static_cast<const UndoCommand&>(*other);
        if (next.m_gesture != m_gesture)
            return false;
        m_changes |= next.m_changes;
        m_after = next.m_after;
        return true;
    }

private:
    void put(const SceneValues& values)
    {
        m_model.edit(m_changes, [&](Scene& scene) { restoreValues(scene, values, m_changes); });
    }

    SceneModel& m_model;
    int m_gesture;
    Changes m_changes;
    SceneValues m_before;
    SceneValues m_after;
    bool m_isDone = false;
};

void SceneModel::apply(const Edit& change)
{
    const std::scoped_lock lock(m_scene.mutex);
    change(m_scene);
}

void SceneModel::tell(Changes changes)
{
    // A drag that begins is nothing that can be seen.
    if (!changes)
        return;
    Q_EMIT changed(changes);
    Q_EMIT frameNeeded();
}

void SceneModel::edit(Changes changes, const Edit& change)
{
    apply(change);
    tell(changes);
}

void SceneModel::editLists(Changes changes, const Edit& change)
{
    if (m_drawing.stop)
        m_drawing.stop();
    if (m_drawing.makeCurrent)
        m_drawing.makeCurrent();
    apply(change);
    tell(changes);
}

void SceneModel::editUndoably(const QString& text, int gesture, Changes changes, const Edit& change)
{
    SceneValues before;
    SceneValues after;
    apply([&](Scene& scene) {
        before = valuesOf(scene);
        change(scene);
        after = valuesOf(scene);
    });
    // What changed nothing is nothing to take back.
    if (!(before == after))
        m_undo.push(new UndoCommand(*this, text, gesture, changes, std::move(before), std::move(after)));
    tell(changes);
}

void SceneModel::follow(Changes changes) { Q_EMIT changed(changes); }

} // namespace tirn
