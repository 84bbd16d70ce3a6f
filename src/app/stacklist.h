#pragma once

#include <memory>

#include "ui/formservices.h"

namespace tirn {

/// The list of loaded volumes and its palettes: how they come, become current and go.
class StackList : public QObject, public StackService, public PaletteService
{
    Q_OBJECT

public:
    /// `beforeClosing` ends the jobs that work on volumes.
    StackList(SceneModel& model, std::function<void()> beforeClosing);

    /// Where palettes go on the card; null until there is one.
    void setPaletteTables(PaletteTables* tables) { m_tables = tables; }
    int count() const { return static_cast<int>(m_model.scene().arrays.size()); }
    /// Files a loaded volume with the palettes that came with it, makes it current and shows it: `look` is
    /// how.
    void add(std::unique_ptr<VoxelArray> array, PaletteList palettes, const SceneModel::Edit& look = {});
    /// False when there is none of this index; with no volumes at all whether the index is -1.
    bool setCurrent(int index);
    /// -1 means the current one.
    void close(int index);
    /// Volumes, palettes and surfaces.
    void closeAll();

    bool makeCurrent(StackId id) override { return setCurrent(m_model.scene().indexOf(id)); }
    void closeStack(StackId id) override;
    PaletteTables* tables() override { return m_tables; }
    void addPalettes(PaletteList palettes) override;
    void closePalette(int index) override;

Q_SIGNALS:
    void currentArrayChanged();
    void stackClosed();

private:
    SceneModel& m_model;
    std::function<void()> m_beforeClosing;
    PaletteTables* m_tables = nullptr;
};

/// The position of the current volume after the one at `closed` has gone, of `count` volumes before that.
int currentAfterClosing(int closed, int current, int count);

} // namespace tirn
