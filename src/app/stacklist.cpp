#include "app/stacklist.h"

#include "base/log.h"
#include "base/stopwatch.h"
#include "scene/paletteedits.h"
#include "scene/sceneedits.h"

namespace tirn {

StackList::StackList(SceneModel& model, std::function<void()> beforeClosing)
    : m_model(model), m_beforeClosing(std::move(beforeClosing))
{}

bool StackList::setCurrent(int index)
{
    if (count() > 0 && m_model.scene().at(index) == nullptr)
        return false;
    m_model.edit(Change::Stacks, [&](Scene& scene) { setCurrentStack(scene, count() > 0 ? index : -1); });
    Q_EMIT currentArrayChanged();
    return count() > 0 || index == -1;
}

void StackList::addPalettes(PaletteList palettes)
{
    if (palettes.empty())
        return;
    m_model.editLists(Change::Palettes, [&](Scene& scene) {
        for (auto& palette : palettes)
            scene.palettes.push_back(std::move(palette));
    });
}

void StackList::closePalette(int index)
{
    if (userOfPalette(m_model.scene(), index))
        return;
    m_model.editLists(Change::Palettes | Change::Channels,
                      [index](Scene& scene) { removePalette(scene, index); });
    // What could be taken back names palettes by their old places.
    m_model.undoStack().clear();
}

void StackList::add(std::unique_ptr<VoxelArray> array, PaletteList palettes, const SceneModel::Edit& look)
{
    const Changes changes = Change::Stacks | Change::Palettes | Change::Pose | Change::Look;
    m_model.editLists(changes, [&](Scene& scene) {
        for (auto& palette : palettes)
            scene.palettes.push_back(std::move(palette));
        if (scene.palettes.empty())
            scene.palettes.push_back(std::make_unique<Palette>("", 8, m_tables));
        // Palettes may have been closed while the stack was loading.
        for (Channel& channel : array->channels()) {
            if (channel.display.palette >= static_cast<int>(scene.palettes.size()))
                channel.display.palette = 0;
        }
        scene.arrays.push_back(std::move(array));
        setCurrentStack(scene, static_cast<int>(scene.arrays.size()) - 1);
        if (look)
            look(scene);
    });
    Q_EMIT currentArrayChanged();
}

void StackList::closeAll()
{
    if (m_model.scene().batchMode)
        return;
    Stopwatch timer;
    m_beforeClosing();
    const Changes changes = Change::Stacks | Change::Palettes | Change::Look | Change::Pose;
    m_model.editLists(changes, [&](Scene& scene) {
        setCurrentStack(scene, -1);
        logDebug("stopping threads %s", qPrintable(plainNumber(timer.restart())));
        while (!scene.arrays.empty())
            scene.arrays.pop_back();
        logDebug("deleting stacks %s", qPrintable(plainNumber(timer.restart())));
        scene.palettes.clear();
        scene.segmentations.clear();
        scene.view.zCorrection = false;
        resetView(scene);
    });
    m_model.undoStack().clear();
    Q_EMIT currentArrayChanged();
    Q_EMIT stackClosed();
    logDebug("Everything closed");
}

int currentAfterClosing(int closed, int current, int count)
{
    // What goes from below the current one takes the current one down with it.
    if (closed < current || (closed == current && closed == count - 1))
        --current;
    return count > 1 && current < 0 ? 0 : current;
}

void StackList::close(int index)
{
    const int old = index < 0 ? m_model.scene().currentIndex : index;
    if (m_model.scene().batchMode || m_model.scene().at(old) == nullptr)
        return;
    m_beforeClosing();
    const int current = currentAfterClosing(old, m_model.scene().currentIndex, count());
    logDebug("new current %d old %d stacks %d", current, old, count());
    m_model.editLists(Change::Stacks, [&](Scene& scene) {
        scene.arrays.erase(scene.arrays.begin() + old);
        setCurrentStack(scene, current);
    });
    logDebug("after delete new current %d old %d stack %d", m_model.scene().currentIndex, old, count());
    Q_EMIT currentArrayChanged();
    if (count() == 0)
        Q_EMIT stackClosed();
}

void StackList::closeStack(StackId id)
{
    if (m_model.scene().find(id) != nullptr)
        close(m_model.scene().indexOf(id));
}

} // namespace tirn
