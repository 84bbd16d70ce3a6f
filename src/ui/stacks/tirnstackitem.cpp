#include "ui/stacks/tirnstackitem.h"

#include <algorithm>

#include <QComboBox>
#include <QEvent>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QSignalBlocker>
#include <QSlider>
#include <QSpinBox>
#include <QStyle>
#include <QTableWidget>
#include <QToolButton>
#include <QVBoxLayout>

#include "base/log.h"
#include "scene/paletteedits.h"
#include "ui/stacks/managertexts.h"
#include "ui/widgets/inkedicon.h"

namespace tirn {

namespace {

/// The second palette is shown while a channel swaps its palettes.
enum Column { PaletteColumn, StateColumn, SecondPaletteColumn, LevelsColumn, ColumnCount };

const QStringList& stateItems()
{
    static const QStringList items = QString("On\tOff\tFlash\tToggle").split('\t');
    return items;
}

constexpr int kFastestFrameRate = 100;

} // namespace

ChannelState stateOfItem(int item)
{
    // One test after the other: item 3 passes both, so that "Toggle" swaps palettes and nothing here lets
    // channels take turns.
    int state = item;
    if (state == 3)
        state = 4;
    if (state == 4)
        state = 6;
    return static_cast<ChannelState>(state);
}

int itemOfState(ChannelState state)
{
    switch (state) {
    case ChannelState::Shown:
        return 0;
    case ChannelState::Hidden:
        return 1;
    case ChannelState::FlashOn:
    case ChannelState::FlashOff:
        return 2;
    case ChannelState::RotatingFlashOn:
    case ChannelState::RotatingFlashWaiting:
    case ChannelState::PaletteSwap:
        return 3;
    }
    return 0;
}

TirnStackItem::TirnStackItem(StackId id, const FormServices& services, QWidget* parent)
    : QWidget(parent), m_id(id), m_services(services), m_fileName(label("lblFilename")),
      m_fileType(label("lblFileType")), m_size(label("lblStackDims")), m_voxelSize(label("lblDim")),
      m_details(label("lblDetails")), m_channels(new QTableWidget(this)), m_time(new QGroupBox(this))
{
    QFont bold = m_fileName->font();
    bold.setBold(true);
    m_fileName->setFont(bold);
    m_fileName->setToolTip(array().name());
    buildChannels();
    buildPlayer();
    auto* texts = new QVBoxLayout;
    for (QLabel* each : {m_fileName, m_fileType, m_size, m_voxelSize, m_details})
        texts->addWidget(each);
    texts->addStretch(1);
    auto* upper = new QHBoxLayout;
    upper->addLayout(texts, 1);
    upper->addWidget(m_channels, 1);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(upper);
    layout->addWidget(m_time);
    updateDimensions();
    refreshPalettes();
    timePointChanged();
    for (QWidget* child : findChildren<QWidget*>())
        child->installEventFilter(this);
}

QLabel* TirnStackItem::label(const char* name)
{
    auto* made = new QLabel(this);
    made->setObjectName(name);
    return made;
}

void TirnStackItem::buildChannels()
{
    m_channels->setObjectName("tblChannels");
    m_channels->setRowCount(array().channelCount());
    m_channels->setColumnCount(ColumnCount);
    m_channels->horizontalHeader()->hide();
    m_channels->verticalHeader()->hide();
    m_channels->setSizeAdjustPolicy(QAbstractScrollArea::AdjustToContents);
    for (const int column : {PaletteColumn, SecondPaletteColumn})
        m_channels->horizontalHeader()->setSectionResizeMode(column, QHeaderView::Stretch);
    for (int row = 0; row < array().channelCount(); ++row) {
        const QString name = QString::asprintf("Channel %d", row + 1);
        m_channels->setVerticalHeaderItem(row, new QTableWidgetItem(name));
        for (int column = 0; column < LevelsColumn; ++column) {
            auto* box = new QComboBox(m_channels);
            box->setToolTip(column == SecondPaletteColumn ? tr("%1 toggles to this palette.").arg(name)
                                                          : name);
            m_channels->setCellWidget(row, column, box);
            connect(box, qOverload<int>(&QComboBox::currentIndexChanged), this,
                    [this, row, column] { changePalette(row, column); });
        }
        const QSignalBlocker blocker(combo(row, StateColumn));
        combo(row, StateColumn)->addItems(stateItems());
        m_channels->setCellWidget(row, LevelsColumn, levelsButton(row));
    }
    m_channels->resizeRowsToContents();
    for (const int column : {StateColumn, LevelsColumn})
        m_channels->resizeColumnToContents(column);
    const int rows = std::min(4, std::max(1, array().channelCount()));
    m_channels->setMinimumHeight(rows * m_channels->rowHeight(0) + 2 * m_channels->frameWidth());
    m_channels->setMinimumWidth(m_channels->columnWidth(StateColumn) + m_channels->columnWidth(LevelsColumn) +
                                fontMetrics().averageCharWidth() * 24);
}

QWidget* TirnStackItem::levelsButton(int channel)
{
    auto* button = new QToolButton(m_channels);
    button->setObjectName(QString("btnAutoLevels%1").arg(channel));
    button->setText(tr("Auto"));
    button->setToolTip(
        tr("Spread the palette of channel %1 over its voxels, but for 0.35 % at each end.").arg(channel + 1));
    button->setFocusPolicy(Qt::StrongFocus);
    connect(button, &QToolButton::clicked, this, [this, channel] {
        m_services.model.edit(Change::Colours, [&](Scene& scene) {
            spreadOverVoxels(scene, *scene.find(m_id), static_cast<std::size_t>(channel));
        });
    });
    return button;
}

QToolButton* TirnStackItem::playerButton(const char* name, int icon, const char* toolTip,
                                         void (TirnStackItem::*slot)())
{
    auto* button = new QToolButton(m_time);
    button->setObjectName(name);
    const QIcon shape = style()->standardIcon(static_cast<QStyle::StandardPixmap>(icon));
    button->setIcon(inkedIcon(shape, palette()));
    button->setToolTip(tr(toolTip));
    button->setAccessibleName(tr(toolTip));
    button->setFocusPolicy(Qt::StrongFocus);
    connect(button, &QToolButton::clicked, this, slot);
    return button;
}

void TirnStackItem::buildPlayer()
{
    m_time->setObjectName("grpTime");
    m_start = playerButton("btnStart", QStyle::SP_MediaSkipBackward, "Rewind to first time point.",
                           &TirnStackItem::gotoBegin);
    m_stop = playerButton("btnStop", QStyle::SP_MediaStop, "Stop moving through the time points.",
                          &TirnStackItem::stop);
    m_play = playerButton("btnPlay", QStyle::SP_MediaPlay, "Play the time points.", &TirnStackItem::play);
    m_end = playerButton("btnEnd", QStyle::SP_MediaSkipForward, "Go to the last time point.",
                         &TirnStackItem::gotoEnd);
    m_slider = new QSlider(Qt::Horizontal, m_time);
    m_slider->setObjectName("movieSlider");
    m_slider->setRange(0, std::max(0, array().timePointCount() - 1));
    m_slider->setMinimumWidth(fontMetrics().averageCharWidth() * 12);
    m_frame = new QLabel(m_time);
    m_frame->setObjectName("lblFrame");
    m_frameRateLabel = new QLabel(tr("FrameRate"), m_time);
    m_frameRateLabel->setObjectName("lblFrameRate");
    m_frameRate = new QSpinBox(m_time);
    m_frameRate->setObjectName("spnFrameRate");
    m_frameRate->setRange(1, kFastestFrameRate);
    m_frameRate->setToolTip(tr("Time points a second."));
    m_frameRateLabel->setBuddy(m_frameRate);
    auto* row = new QHBoxLayout(m_time);
    for (QWidget* widget : std::initializer_list<QWidget*>{m_start, m_stop, m_play, m_end})
        row->addWidget(widget);
    row->addWidget(m_slider, 1);
    for (QWidget* widget : std::initializer_list<QWidget*>{m_frame, m_frameRateLabel, m_frameRate})
        row->addWidget(widget);
    connect(m_slider, &QSlider::valueChanged, this, &TirnStackItem::changeTimePoint);
    connect(m_frameRate, qOverload<int>(&QSpinBox::valueChanged), this, &TirnStackItem::changeFrameRate);
    m_time->setVisible(array().timePointCount() > 1);
}

bool TirnStackItem::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::FocusIn || event->type() == QEvent::MouseButtonPress)
        Q_EMIT entered();
    return QWidget::eventFilter(watched, event);
}

QComboBox* TirnStackItem::combo(int row, int column) const
{
    return static_cast<QComboBox*>(m_channels->cellWidget(row, column));
}

void TirnStackItem::edit(Changes changes, const std::function<void(VoxelArray&)>& change)
{
    m_services.model.edit(changes, [&](Scene& scene) { change(*scene.find(m_id)); });
}

void TirnStackItem::setPlayerEnabled(bool enabled)
{
    for (QWidget* widget : std::initializer_list<QWidget*>{m_start, m_stop, m_play, m_end, m_slider, m_frame,
                                                           m_frameRateLabel, m_frameRate})
        widget->setEnabled(enabled);
    // Of the buttons only this one stays to be seen.
    for (QWidget* widget : {m_start, m_play, m_end})
        widget->setVisible(enabled);
}

void TirnStackItem::showTimePoint(int timePoint) { m_frame->setText(QString::asprintf("%.2d", timePoint)); }

void TirnStackItem::changeTimePoint(int timePoint)
{
    edit(Change::TimePoint, [timePoint](VoxelArray& volume) { volume.setTimePoint(timePoint); });
    showTimePoint(timePoint);
    Q_EMIT timepointChanged();
}

void TirnStackItem::gotoBegin() { m_slider->setValue(0); }

void TirnStackItem::gotoEnd() { m_slider->setValue(array().timePointCount() - 1); }

void TirnStackItem::timePointChanged()
{
    const int timePoint = m_services.model.read([this](const Scene&) { return array().timePoint(); });
    const QSignalBlocker blocker(m_slider);
    m_slider->setValue(timePoint);
    showTimePoint(timePoint);
}

void TirnStackItem::nextFrame()
{
    const QSignalBlocker blocker(m_slider);
    m_slider->setMaximum(array().timePointCount() - 1);
    m_slider->setValue(m_services.model.read([this](const Scene&) { return array().timePoint(); }) + 1);
}

void TirnStackItem::refreshPalettes()
{
    QStringList names;
    bool toggles = false;
    for (const auto& palette : m_services.model.scene().palettes)
        names.append(palette->name());
    for (int row = 0; row < m_channels->rowCount(); ++row) {
        const ChannelDisplay display = m_services.model.read(
            [&](const Scene&) { return array().channels()[static_cast<std::size_t>(row)].display; });
        const auto fill = [&](int column, int palette) {
            QComboBox* palettes = combo(row, column);
            const QSignalBlocker blocker(palettes);
            palettes->clear();
            palettes->addItems(names);
            palettes->setCurrentIndex(palette);
        };
        fill(PaletteColumn, chosenPalette(display));
        fill(SecondPaletteColumn, secondPalette(display));
        const bool isToggling = display.state == ChannelState::PaletteSwap;
        combo(row, SecondPaletteColumn)->setEnabled(isToggling);
        toggles = toggles || isToggling;
        const QSignalBlocker stateBlocker(combo(row, StateColumn));
        combo(row, StateColumn)->setCurrentIndex(itemOfState(display.state));
    }
    m_channels->setColumnHidden(SecondPaletteColumn, !toggles);
}

void TirnStackItem::updateDimensions()
{
    m_fileName->setText(fileNameText(array()));
    m_fileType->setText(fileTypeText(array()));
    m_size->setText(stackSizeText(array()));
    const QString voxelSize = voxelSizeText(array().stack());
    m_voxelSize->setText(voxelSize);
    m_voxelSize->setVisible(!voxelSize.isEmpty());
    m_details->setText(detailsText(array()));
}

void TirnStackItem::changePalette(int row, int column)
{
    const int item = combo(row, column)->currentIndex();
    if (item < 0)
        return;
    m_services.model.editUndoably(
        column == StateColumn ? tr("state of a channel") : tr("palette of a channel"), 0, Change::Channels,
        [&](Scene& scene) {
            ChannelDisplay& display = scene.find(m_id)->channels()[static_cast<std::size_t>(row)].display;
            if (column == PaletteColumn)
                choosePalette(display, item);
            else if (column == SecondPaletteColumn)
                chooseSecondPalette(display, item);
            else
                chooseState(display, stateOfItem(item));
        });
    if (column != StateColumn) {
        logDebug("setting palette %d to %d", row, item);
        Q_EMIT paletteAssigned();
    } else {
        Q_EMIT paletteStateChanged();
    }
}

void TirnStackItem::play()
{
    if (m_services.model.scene().recording)
        return;
    // What plays is the stack that is shown.
    if (m_services.model.scene().currentId() != m_id)
        m_services.stacks.makeCurrent(m_id);
    m_services.model.edit(Change::Playback, [this](Scene& scene) {
        scene.view.timeRate = m_frameRate->value();
        scene.view.playing = m_id;
    });
}

void TirnStackItem::stop()
{
    if (!m_services.model.scene().recording)
        m_services.model.edit(Change::Playback, [](Scene& scene) { scene.view.playing = StackId::None; });
}

void TirnStackItem::changeFrameRate(int rate)
{
    m_services.model.edit(Change::Playback, [rate](Scene& scene) { scene.view.timeRate = rate; });
}

} // namespace tirn
