#pragma once

#include <vector>

#include "ui/toolform.h"
#include <QPointer>

class QCheckBox;
class QLabel;
class QPushButton;
class QSpinBox;
class QStackedWidget;
class QTableWidget;

namespace tirn {

class FileChooser;
class StackOpenExtension;

/// Asks what is to be loaded: a file for each channel, files with all channels, or a sequence that is known
/// already. What it makes of that is a filled description of the load, which it starts.
///
/// A check that fails shows a box and leaves the form as it is.
class StackOpenForm : public ToolForm
{
    Q_OBJECT

public:
    StackOpenForm(const FormServices& services, QWidget* parent);

public Q_SLOTS:
    /// Shows the page for a file, filled as far as the file tells.
    void setup(const QString& file);
    /// Shows a sequence whose files the load names.
    void setupTiff(const tirn::LoadDescription& load, const QString& pattern, int bitDepth, int slices);
    /// Loads what the visible page says.
    void openStack();
    void toggleExtension();
    /// A name or, for a time series, a pattern.
    void fileNameChanged(const QString& file, bool timeSeries);
    void timeSeriesChecked();
    void multiTimeSeriesChecked();
    void setNumberOfChannels(int channels);
    void calculateMemory();
    void buildFileList_onePerFile();
    void buildFileList_manyPerFile();
    /// Loads files that were loaded before or that were dropped; 0 channels or time points are found out.
    void buildFileList_knownList(const std::vector<QStringList>& files, int channels, int timePoints);

Q_SIGNALS:
    /// Microns along each axis, as they stand in the details.
    void scaleChanged(double x, double y, double z);

protected:
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    enum Page { SingleChannel = 0, MultiChannel = 1, TiffSeries = 2 };

    /// What the channels are compared with: the first one's files and the size of the first of them.
    struct FirstChannel
    {
        int files = 0;
        int x = 0;
        int y = 0;
        int z = 0;
    };

    /// What there is to be estimated.
    struct Subject
    {
        QStringList names;
        int channels = 0;
        int timePoints = 1;
    };

    QWidget* singleChannelPage();
    QWidget* multiChannelPage();
    QWidget* tiffSeriesPage();
    QWidget* buttonRow();
    void connectWidgets();
    QLabel* seriesLabel(QWidget* page, const char* name);
    FileChooser* makeChooser(const QString& filter);

    void beginSetup(Page page);
    void setupKnown(const QString& file);
    void setupSiblings(const QString& file);
    void setupChannelFiles(const QStringList& files, int rows);
    void setupOlympus(const QString& file, const ImageAttributes& attributes);
    void setupSeries(int slices, int timePoints, double x, double y, double z);
    void finishSetup();

    bool isTimeSeries() const;
    QStringList namesIn(const QString& name, bool timeSeries) const;
    void timeSeriesToggled(bool on);
    void closeExtension();
    void takeFirstFile(const QString& first, int files, bool timeSeries);
    Subject subjectOfPage() const;
    QString memoryLine(const Subject& subject) const;
    QString factsLine(const Subject& subject) const;
    void orderTabs();

    /// Goes on once the stacks are known. Meanwhile nothing in the form can be changed, and it can be closed.
    void openWhenKnown(std::vector<QStringList> stacks, void (StackOpenForm::*next)());
    void setWaiting(bool waiting);
    void openOnePerFile();
    void openManyPerFile();
    void openKnownList(const std::vector<QStringList>& files, int channels, int timePoints);

    void refuse(const QString& text);
    /// The file has no voxels; says where they are.
    void refuseLeica(const QString& file);
    bool checkFile(const QString& name);
    void dropEmptyLastRows();
    bool addChannel(int channel, FirstChannel& first);
    bool fitsFirst(int channel, const QStringList& files, const FirstChannel& first);
    void openSeries();
    void describe(LoadDescription& load) const;

    QStackedWidget* m_pages;
    QTableWidget* m_table = nullptr;
    QSpinBox* m_channelCount = nullptr;
    QCheckBox* m_timeSeries = nullptr;
    FileChooser* m_multiChooser = nullptr;
    QCheckBox* m_multiTimeSeries = nullptr;
    QLabel* m_pattern = nullptr;
    QLabel* m_channels = nullptr;
    QLabel* m_timePoints = nullptr;
    QLabel* m_bitDepth = nullptr;
    QLabel* m_slices = nullptr;
    QLabel* m_facts;
    QLabel* m_memory;
    QPushButton* m_open = nullptr;
    QPushButton* m_details = nullptr;
    QWidget* m_buttons = nullptr;
    StackOpenExtension* m_extension;
    /// The choosers in the rows of the table, which owns them.
    std::vector<FileChooser*> m_channelRows;
    /// The expanded names of each channel.
    std::vector<QStringList> m_channelFiles;
    /// The details were shown since the form was set up; only then do they count.
    bool m_extensionOpened = false;
    /// The load that the page of the sequence shows.
    LoadDescription m_series;
    /// The file that the ranges of the details were set for.
    QString m_rangesOf;
    /// What had the keyboard when the form began to wait for files.
    QPointer<QWidget> m_focusBefore;
    /// What is asked about files: the one to be set up for, the first of the page, the one whose memory is
    /// estimated, those to be opened, and those of a list from elsewhere.
    ProbeQuestion m_chosen;
    ProbeQuestion m_first;
    ProbeQuestion m_estimated;
    ProbeQuestion m_opening;
    ProbeQuestion m_listed;
};

} // namespace tirn
