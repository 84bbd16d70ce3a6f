// The form's widgets, and how they are filled for a file.

#include "ui/open/stackopenform.h"

#include <algorithm>
#include <new>

#include <QCheckBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QPushButton>
#include <QShowEvent>
#include <QSpinBox>
#include <QStackedWidget>
#include <QTableWidget>
#include <QVBoxLayout>

#include "base/log.h"
#include "formats/imageformats.h"
#include "formats/names/filefilters.h"
#include "formats/names/filelists.h"
#include "ui/messages.h"
#include "ui/open/stackopenextension.h"
#include "ui/open/startload.h"
#include "ui/widgets/filechooser.h"
#include "ui/widgets/taborder.h"

namespace tirn {

namespace {

constexpr int kMostChannels = 64;
constexpr int kMostSiblings = 4;
/// Rows of the table and characters of a name that can be seen without scrolling.
constexpr int kVisibleRows = 4;
constexpr int kVisibleCharacters = 56;

QLabel* wildcardHint(QWidget* page)
{
    auto* hint = new QLabel(StackOpenForm::tr("For time series use * or ? wildcards to denote\n"
                                              "the numbered portion of the file name."),
                            page);
    hint->setObjectName("lblHint");
    return hint;
}

/// Why a file is no stack, on lines of their own.
QString reasons(const ImageAttributes& unknown)
{
    QString lines;
    for (const QString& reason : unknown.notes)
        lines += "\n" + reason;
    return lines;
}

} // namespace

StackOpenForm::StackOpenForm(const FormServices& services, QWidget* parent)
    : ToolForm(services, {}, parent), m_pages(new QStackedWidget(this)), m_facts(new QLabel(this)),
      m_memory(new QLabel(this)), m_extension(new StackOpenExtension(services.card.hasTexture3D, this)),
      m_chosen(services.probes), m_first(services.probes), m_estimated(services.probes),
      m_opening(services.probes), m_listed(services.probes)
{
    setWindowTitle(tr("File Open"));
    m_pages->setObjectName("wskOpen");
    m_pages->addWidget(singleChannelPage());
    m_pages->addWidget(multiChannelPage());
    m_pages->addWidget(tiffSeriesPage());
    m_facts->setObjectName("lblFacts");
    m_facts->setWordWrap(true);
    m_memory->setObjectName("lblMemory");
    m_extension->setObjectName("extension");
    auto* column = new QVBoxLayout;
    column->addWidget(m_pages, 1);
    column->addWidget(m_facts);
    column->addWidget(m_memory);
    m_buttons = buttonRow();
    column->addWidget(m_buttons);
    // Side by side both fit on a small screen, even with everything twice as large.
    auto* layout = new QHBoxLayout(this);
    layout->addLayout(column, 1);
    layout->addWidget(m_extension, 0, Qt::AlignTop);
    m_extension->hide();
    connectWidgets();
    setNumberOfChannels(2);
}

QWidget* StackOpenForm::singleChannelPage()
{
    auto* page = new QWidget(m_pages);
    page->setObjectName("singleChannel");
    m_channelCount = new QSpinBox(page);
    m_channelCount->setObjectName("spnNumChannels");
    m_channelCount->setRange(1, kMostChannels);
    auto* label = new QLabel(tr("&Number of Channels"), page);
    label->setBuddy(m_channelCount);
    m_table = new QTableWidget(0, 2, page);
    m_table->setObjectName("tblChannels");
    m_table->setHorizontalHeaderLabels({tr("Channel"), tr("File")});
    m_table->horizontalHeader()->setSectionResizeMode(0, QHeaderView::ResizeToContents);
    m_table->horizontalHeader()->setSectionResizeMode(1, QHeaderView::Stretch);
    m_table->verticalHeader()->hide();
    m_table->setSelectionMode(QAbstractItemView::NoSelection);
    m_table->setEditTriggers(QAbstractItemView::NoEditTriggers);
    // The tab key goes from chooser to chooser.
    m_table->setTabKeyNavigation(false);
    m_table->setFocusPolicy(Qt::NoFocus);
    m_timeSeries = new QCheckBox(tr("&Time Series"), page);
    m_timeSeries->setObjectName("chkTimeSeries");
    auto* count = new QHBoxLayout;
    count->addWidget(label);
    count->addWidget(m_channelCount);
    count->addStretch(1);
    auto* layout = new QVBoxLayout(page);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addLayout(count);
    layout->addWidget(m_table, 1);
    layout->addWidget(m_timeSeries);
    layout->addWidget(wildcardHint(page));
    return page;
}

QWidget* StackOpenForm::multiChannelPage()
{
    auto* page = new QWidget(m_pages);
    page->setObjectName("multiChannel");
    m_multiChooser = new FileChooser(FileChooser::Mode::OpenFile, page);
    m_multiChooser->setObjectName("fchMultiChannel");
    m_multiChooser->setTitle(tr("File Open"));
    m_multiChooser->setFilter(stackFileFilter());
    auto* label = new QLabel(tr("&File"), page);
    label->setBuddy(m_multiChooser);
    m_multiTimeSeries = new QCheckBox(tr("&Time Series"), page);
    m_multiTimeSeries->setObjectName("chkMultiTimeSeries");
    auto* file = new QHBoxLayout;
    file->addWidget(label);
    file->addWidget(m_multiChooser, 1);
    auto* layout = new QVBoxLayout(page);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addLayout(file);
    layout->addWidget(m_multiTimeSeries);
    layout->addWidget(wildcardHint(page));
    layout->addStretch(1);
    return page;
}

QLabel* StackOpenForm::seriesLabel(QWidget* page, const char* name)
{
    auto* label = new QLabel(page);
    label->setObjectName(name);
    label->setWordWrap(true);
    return label;
}

QWidget* StackOpenForm::tiffSeriesPage()
{
    auto* page = new QWidget(m_pages);
    page->setObjectName("tiffSeries");
    m_pattern = seriesLabel(page, "lblPattern");
    m_channels = seriesLabel(page, "lblChannels");
    m_timePoints = seriesLabel(page, "lblTimePoints");
    m_bitDepth = seriesLabel(page, "lblBitDepth");
    m_slices = seriesLabel(page, "lblSlices");
    auto* layout = new QVBoxLayout(page);
    for (QLabel* label : {m_pattern, m_channels, m_timePoints, m_bitDepth, m_slices})
        layout->addWidget(label);
    layout->addStretch(1);
    return page;
}

QWidget* StackOpenForm::buttonRow()
{
    auto* row = new QWidget(this);
    const auto button = [row](const char* name, const QString& text) {
        auto* made = new QPushButton(text, row);
        made->setObjectName(name);
        return made;
    };
    m_open = button("btnOpen", tr("&Open"));
    m_open->setDefault(true);
    QPushButton* cancel = button("btnCancel", tr("&Cancel"));
    m_details = button("btnDetails", tr("&Details ") + ">>>");
    connect(m_open, &QPushButton::clicked, this, &StackOpenForm::openStack);
    connect(cancel, &QPushButton::clicked, this, &QDialog::reject);
    connect(m_details, &QPushButton::clicked, this, &StackOpenForm::toggleExtension);
    auto* layout = new QHBoxLayout(row);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addStretch(1);
    for (QPushButton* each : {m_open, cancel, m_details})
        layout->addWidget(each);
    return row;
}

void StackOpenForm::connectWidgets()
{
    connect(m_channelCount, qOverload<int>(&QSpinBox::valueChanged), this,
            &StackOpenForm::setNumberOfChannels);
    connect(m_timeSeries, &QCheckBox::toggled, this, &StackOpenForm::timeSeriesChecked);
    connect(m_timeSeries, &QCheckBox::toggled, this, &StackOpenForm::calculateMemory);
    connect(m_multiChooser, &FileChooser::fileNameChanged, this, &StackOpenForm::multiTimeSeriesChecked);
    connect(m_multiChooser, &FileChooser::fileNameChanged, this, &StackOpenForm::calculateMemory);
    connect(m_multiTimeSeries, &QCheckBox::toggled, this, &StackOpenForm::multiTimeSeriesChecked);
    connect(m_multiTimeSeries, &QCheckBox::toggled, this, &StackOpenForm::calculateMemory);
    connect(m_extension, &StackOpenExtension::calculateMemory, this, &StackOpenForm::calculateMemory);
    connect(m_extension, &StackOpenExtension::dimensionsChanged, this, &StackOpenForm::scaleChanged);
}

FileChooser* StackOpenForm::makeChooser(const QString& filter)
{
    auto* chooser = new FileChooser(FileChooser::Mode::OpenFile, m_table);
    chooser->setTitle(tr("File Open"));
    chooser->setFilter(filter);
    chooser->setPathHint(services().settings.stackPath);
    connect(chooser, &FileChooser::fileNameChanged, this, &StackOpenForm::timeSeriesChecked);
    connect(chooser, &FileChooser::fileNameChanged, this, &StackOpenForm::calculateMemory);
    return chooser;
}

void StackOpenForm::setNumberOfChannels(int wanted)
{
    const int channels = std::clamp(wanted, 1, kMostChannels);
    int rows = m_table->rowCount();
    if (channels == rows)
        return;
    {
        const QSignalBlocker blocker(m_channelCount);
        m_channelCount->setValue(channels);
    }
    for (; rows > channels; --rows) {
        logDebug("Row %d of %d removed", rows - 1, rows);
        m_channelRows.pop_back();
        m_table->removeRow(rows - 1);
    }
    try {
        for (; rows < channels; ++rows) {
            logDebug("Row %d added", rows);
            FileChooser* chooser = makeChooser(channelFileFilter());
            chooser->setObjectName("fchChannel" + QString::number(rows + 1));
            m_channelRows.push_back(chooser);
            m_table->insertRow(rows);
            m_table->setItem(rows, 0, new QTableWidgetItem(tr("Channel ") + QString::number(rows + 1)));
            m_table->setCellWidget(rows, 1, chooser);
            m_table->setRowHeight(rows, chooser->sizeHint().height() + fontMetrics().height() / 2);
        }
    } catch (const std::bad_alloc&) {
        logWarning("Could not allocate file chooser");
    }
    orderTabs();
    calculateMemory();
}

/// From top to bottom, as things stand, and the buttons last.
void StackOpenForm::orderTabs() { chainTabs({m_pages, m_extension, m_buttons}); }

void StackOpenForm::showEvent(QShowEvent* event)
{
    Settings& settings = services().settings;
    if (settings.stackPath.isEmpty() && !settings.palettePath.isEmpty())
        settings.stackPath = settings.palettePath;
    if (!event->spontaneous()) {
        const int rowHeight = m_table->rowCount() > 0 ? m_table->rowHeight(0) : 0;
        m_table->setMinimumHeight(m_table->horizontalHeader()->sizeHint().height() +
                                  kVisibleRows * rowHeight + 2 * m_table->frameWidth());
        m_table->setMinimumWidth(kVisibleCharacters * fontMetrics().averageCharWidth());
        calculateMemory();
    }
    ToolForm::showEvent(event);
}

void StackOpenForm::keyPressEvent(QKeyEvent* event)
{
    switch (event->key()) {
    case Qt::Key_Escape:
        close();
        return;
    case Qt::Key_Return:
    case Qt::Key_Enter:
        ToolForm::keyPressEvent(event);
        return;
    default:
        event->ignore();
    }
}

/// What nobody waits for any more is not opened.
void StackOpenForm::hideEvent(QHideEvent* event)
{
    if (!event->spontaneous()) {
        m_opening.cancel();
        setWaiting(false);
    }
    ToolForm::hideEvent(event);
}

void StackOpenForm::toggleExtension()
{
    const bool opens = m_extension->isHidden();
    const int room = m_extension->sizeHint().width() + layout()->spacing();
    const QSize wanted(width() + (opens ? room : -room), height());
    m_extension->setVisible(opens);
    m_extensionOpened = m_extensionOpened || opens;
    m_details->setText(tr("&Details ") + (opens ? "<<<" : ">>>"));
    // The details take nothing from the rest of the form.
    layout()->activate();
    resize(wanted);
}

void StackOpenForm::closeExtension()
{
    if (!m_extension->isHidden())
        toggleExtension();
    m_extensionOpened = false;
}

void StackOpenForm::beginSetup(Page page)
{
    m_opening.cancel();
    setWaiting(false);
    closeExtension();
    m_extension->reset();
    m_rangesOf.clear();
    for (QCheckBox* box : {m_timeSeries, m_multiTimeSeries}) {
        const QSignalBlocker blocker(box);
        box->setChecked(false);
    }
    m_extension->choose3D(services().settings.defaultEncode == 1);
    m_pages->setCurrentIndex(page);
}

void StackOpenForm::finishSetup()
{
    calculateMemory();
    show();
    raise();
}

void StackOpenForm::refuseLeica(const QString& file)
{
    showMessage(this, QMessageBox::Warning, tr("Leica load"),
                file + tr(" describes images whose voxels are in the tiff files beside it. To load them, "
                          "please use Load Sequence Tiff and choose the first of them."));
}

void StackOpenForm::setup(const QString& file)
{
    if (checkFile(file))
        m_chosen.ask({{file}}, [this, file] { setupKnown(file); });
}

void StackOpenForm::setupKnown(const QString& file)
{
    const ImageAttributes attributes = m_chosen.known({file});
    const auto warn = [&](const QString& title, const QString& text) {
        showMessage(this, QMessageBox::Warning, title, file + text);
    };
    if (attributes.type == ImageType::Unknown) {
        warn(tr("Unknown file type"), tr(" does not appear to be any image file format recognized by Tirn. "
                                         "You may want to try Import Raw Stack.") +
                                          reasons(attributes));
        return;
    }
    switch (imageFormat(attributes.type).page) {
    case OpenPage::Layer:
        warn(tr("Tif load"), tr(" appears to be a single slice tiff file. If you want to load a series of "
                                "tiff files, please use Load Sequence Tiff."));
        return;
    case OpenPage::Description:
        refuseLeica(file);
        return;
    case OpenPage::Siblings:
        setupSiblings(file);
        break;
    case OpenPage::DataSet:
        setupOlympus(file, attributes);
        break;
    case OpenPage::ByChannels:
        if (attributes.channels == 1) {
            setupChannelFiles({file}, 2);
            break;
        }
        [[fallthrough]];
    case OpenPage::OneFile:
        beginSetup(MultiChannel);
        m_multiChooser->setFileName(file);
        multiTimeSeriesChecked();
        break;
    case OpenPage::None:
        break;
    }
    finishSetup();
}

void StackOpenForm::setupSiblings(const QString& file)
{
    const QStringList siblings = siblingChannelFiles(file);
    if (siblings.isEmpty() || siblings.size() > kMostSiblings)
        setupChannelFiles({file}, 2);
    else
        setupChannelFiles(siblings, static_cast<int>(siblings.size()));
}

/// Rows beyond the files stay empty.
void StackOpenForm::setupChannelFiles(const QStringList& files, int rows)
{
    beginSetup(SingleChannel);
    setNumberOfChannels(rows);
    for (int i = 0; i < rows; ++i)
        m_channelRows[static_cast<std::size_t>(i)]->setFileName(files.value(i));
    timeSeriesChecked();
}

void StackOpenForm::setupOlympus(const QString& file, const ImageAttributes& attributes)
{
    beginSetup(TiffSeries);
    // One file with its own channels stands for all of its pictures, and only one time point is read.
    m_series = freshLoad(services());
    m_series.filesToLoad = {{file}};
    m_series.channels = attributes.channels;
    m_pattern->setText("<p align=\"center\">" + file.toHtmlEscaped() + "</p>");
    m_channels->setText(tr("Channels: %1").arg(attributes.channels));
    m_bitDepth->setText(tr("Bit Depth: %1").arg(attributes.bitDepth));
    m_slices->setText(tr("Slices: %1").arg(attributes.fileZ));
    m_timePoints->setText(tr("Time Points: %1").arg(attributes.timePoints));
    const auto known = [](double size) { return size > 0 ? size : 1.0; };
    setupSeries(attributes.fileZ, attributes.timePoints, known(attributes.dimX), known(attributes.dimY),
                known(attributes.dimZ));
}

void StackOpenForm::setupTiff(const LoadDescription& load, const QString& pattern, int bitDepth, int slices)
{
    beginSetup(TiffSeries);
    m_series = load;
    m_pattern->setText("<p align=\"center\">Filename pattern: " + pattern.toHtmlEscaped() + "</p>");
    const auto labelled = [](const QString& text, int number) {
        return text + "<b>" + QString::number(number) + "</b>";
    };
    m_channels->setText(labelled(tr("Channels: "), load.channels));
    m_bitDepth->setText(labelled(tr("Bit depth: "), bitDepth));
    m_slices->setText(labelled(tr("Slices: "), slices));
    m_timePoints->setText(labelled(tr("Time points: "), load.timePoints));
    setupSeries(slices, load.timePoints, 1.0, 1.0, 1.0);
    finishSetup();
}

void StackOpenForm::setupSeries(int slices, int timePoints, double x, double y, double z)
{
    m_extension->setRanges(slices, timePoints);
    m_extension->setDim(x, y, z);
    m_extension->showTimeStep(timePoints > 1);
}

} // namespace tirn
