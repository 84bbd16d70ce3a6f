#pragma once

#include <functional>
#include <vector>

#include <QWidget>

#include "scene/scene.h"

class QComboBox;
class QGroupBox;
class QLabel;
class QSlider;
class QSpinBox;
class QTableWidget;
class QToolButton;

namespace tirn {

class TirnWidget;

/// What the stack manager works with. All of it outlives the manager.
struct ManagerServices
{
    Scene& scene;
    /// The widget in use.
    std::function<TirnWidget&()> widget;
    std::function<bool(int index)> setCurrentArray;
    std::function<void(int index)> closeStack;
    std::function<void()> loadStack;
    /// Null while there is no palette editor.
    std::function<void()> editPalette;
};

/// A volume's row in the stack manager: what it is, a palette and a state for each channel, and a player for
/// its time points. Playing is done by the render thread; here is said how.
class TirnStackItem : public QWidget
{
    Q_OBJECT

public:
    /// `array` outlives the item.
    TirnStackItem(VoxelArray& array, const ManagerServices& services, QWidget* parent);

    VoxelArray& array() { return m_array; }

public Q_SLOTS:
    void setPlayerEnabled(bool enabled);
    void changeTimePoint(int timePoint);
    void gotoBegin();
    void gotoEnd();
    /// Shows the volume's time point, wherever it was changed.
    void timePointChanged();
    /// Takes over the names of the palettes and what the channels show.
    void refreshPalettes();
    void updateDimensions();
    /// Column 0 of a channel's row: its palette; column 1: its state.
    void changePalette(int row, int column);
    /// Shows the time point after the current one, without going there.
    void nextFrame();
    void play();
    void stop();
    void changeFrameRate(int rate);
    void prepForMovie() { setPlayerEnabled(false); }
    void returnFromMovie() { setPlayerEnabled(true); }

Q_SIGNALS:
    void paletteAssigned();
    void paletteStateChanged();
    void timepointChanged();
    /// Something in the row was used.
    void entered();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    QLabel* label(const char* name);
    void buildChannels();
    void buildPlayer();
    QToolButton* playerButton(const char* name, int icon, const char* toolTip, void (TirnStackItem::*slot)());
    QComboBox* combo(int row, int column) const;
    void showTimePoint(int timePoint);
    bool recording() const;

    VoxelArray& m_array;
    const ManagerServices& m_services;
    QLabel* m_fileName;
    QLabel* m_fileType;
    QLabel* m_size;
    QLabel* m_voxelSize;
    QLabel* m_details;
    QTableWidget* m_channels;
    QGroupBox* m_time;
    QToolButton* m_start;
    QToolButton* m_stop;
    QToolButton* m_play;
    QToolButton* m_end;
    QSlider* m_slider;
    QLabel* m_frame;
    QLabel* m_frameRateLabel;
    QSpinBox* m_frameRate;
};

/// The state that an item of a channel's list stands for, and the item that shows a state.
ChannelState stateOfItem(int item);
int itemOfState(ChannelState state);

} // namespace tirn
