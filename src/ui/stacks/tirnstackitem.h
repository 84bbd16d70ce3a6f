#pragma once

#include <functional>

#include <QWidget>

#include "ui/formservices.h"

class QComboBox;
class QGroupBox;
class QLabel;
class QSlider;
class QSpinBox;
class QTableWidget;
class QToolButton;

namespace tirn {

/// A volume's row in the stack manager: what it is, a palette and a state for each channel, and a player for
/// its time points. Playing is done by the render thread; here is said how.
class TirnStackItem : public QWidget
{
    Q_OBJECT

public:
    /// The volume is there as long as the item.
    TirnStackItem(StackId id, const FormServices& services, QWidget* parent);

    StackId id() const { return m_id; }

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
    /// Column 0 of a channel's row: its palette; 1: its state; 2: the palette that it toggles to.
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
    /// Sets the levels of the palette that a channel shows.
    QWidget* levelsButton(int channel);
    QToolButton* playerButton(const char* name, int icon, const char* toolTip, void (TirnStackItem::*slot)());
    QComboBox* combo(int row, int column) const;
    void showTimePoint(int timePoint);
    const VoxelArray& array() const { return *m_services.model.scene().find(m_id); }
    /// Changes the volume.
    void edit(Changes changes, const std::function<void(VoxelArray&)>& change);

    StackId m_id;
    const FormServices& m_services;
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
