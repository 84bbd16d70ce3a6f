// What the form makes of the names: ranges, an estimate, lists of files, a load.

#include <algorithm>

#include <QCheckBox>
#include <QFileInfo>
#include <QLabel>
#include <QPushButton>
#include <QSpinBox>
#include <QStackedWidget>
#include <QTableWidget>

#include "base/log.h"
#include "formats/imageformats.h"
#include "formats/names/filelists.h"
#include "image/memoryestimate.h"
#include "image/stackfacts.h"
#include "ui/messages.h"
#include "ui/open/stackopenextension.h"
#include "ui/open/stackopenform.h"
#include "ui/open/startload.h"
#include "ui/widgets/filechooser.h"

namespace tirn {

/// The names that a line stands for: those that its pattern finds, or itself.
QStringList StackOpenForm::namesIn(const QString& name, bool timeSeries) const
{
    return timeSeries ? expandPatternToPaths(name) : QStringList{name};
}

void StackOpenForm::fileNameChanged(const QString& file, bool timeSeries)
{
    const QStringList names = namesIn(file, timeSeries);
    const QString first = names.value(0);
    if (!QFileInfo(first).isFile()) {
        m_first.cancel();
        return;
    }
    m_first.ask({{first}}, [this, first, files = static_cast<int>(names.size()), timeSeries] {
        takeFirstFile(first, files, timeSeries);
    });
}

void StackOpenForm::takeFirstFile(const QString& first, int files, bool timeSeries)
{
    const QString directory = QFileInfo(first).absolutePath();
    const ImageAttributes known = m_first.known({first});
    if (known.type != ImageType::Unknown) {
        // What was chosen in the details stays while it is about the same file.
        if (first != m_rangesOf) {
            m_extension->setRanges(known.fileZ, files);
            m_extension->setDim(known.dimX, known.dimY, known.dimZ);
        }
        m_extension->setTimePoints(files);
        m_extension->showTimeStep(timeSeries);
        m_rangesOf = first;
        services().settings.stackPath = directory;
    }
    for (FileChooser* chooser : m_channelRows)
        chooser->setPathHint(directory);
    m_multiChooser->setPathHint(directory);
}

void StackOpenForm::timeSeriesChecked()
{
    fileNameChanged(m_channelRows.front()->fileName(), m_timeSeries->isChecked());
    timeSeriesToggled(m_timeSeries->isChecked());
}

void StackOpenForm::multiTimeSeriesChecked()
{
    fileNameChanged(m_multiChooser->fileName(), m_multiTimeSeries->isChecked());
    timeSeriesToggled(m_multiTimeSeries->isChecked());
}

void StackOpenForm::timeSeriesToggled(bool on)
{
    const Settings& settings = services().settings;
    if (!m_extensionOpened)
        m_extension->choose3D((on ? settings.defaultTimeSeriesEncode : settings.defaultEncode) == 1);
    m_extension->toggleMaps();
    if (m_extension->isHidden() || m_extension->showsTimeStep() == on) {
        m_extension->showTimeStep(on);
        return;
    }
    m_extension->showTimeStep(on);
    // Laid out anew.
    toggleExtension();
    toggleExtension();
}

StackOpenForm::Subject StackOpenForm::subjectOfPage() const
{
    switch (m_pages->currentIndex()) {
    case SingleChannel: {
        const bool series = m_timeSeries->isChecked();
        const QStringList names = namesIn(m_channelRows.front()->fileName(), series);
        const auto named = [](const FileChooser* row) { return !row->fileName().trimmed().isEmpty(); };
        const auto channels = std::count_if(m_channelRows.begin(), m_channelRows.end(), named);
        return {names.mid(0, 1), static_cast<int>(channels), series ? static_cast<int>(names.size()) : 1};
    }
    case MultiChannel: {
        const bool series = m_multiTimeSeries->isChecked();
        const QStringList names = namesIn(m_multiChooser->fileName(), series);
        return {names.mid(0, 1), 0, series ? static_cast<int>(names.size()) : 1};
    }
    case TiffSeries:
        if (!m_series.filesToLoad.empty())
            return {m_series.filesToLoad.front(), m_series.channels,
                    m_series.timePoints / m_extension->timeStep()};
    }
    return {};
}

QString StackOpenForm::memoryLine(const Subject& subject) const
{
    const ImageAttributes known = m_estimated.known(subject.names);
    if (known.type == ImageType::Unknown)
        return unknownMemoryText();
    MemoryQuestion question;
    question.x = known.fileX;
    question.y = known.fileY;
    question.bitDepth = known.bitDepth;
    question.channels = subject.channels > 0 ? subject.channels : known.channels;
    question.timePoints = subject.timePoints;
    question.first = m_extension->first();
    question.last = m_extension->last();
    question.step = m_extension->step();
    question.subsample = m_extension->subsample();
    question.uses3DTextures = !m_extension->uses2DMaps();
    question.conservesMemory = m_extension->conserve();
    return memoryText(estimatedBytes(question));
}

/// What is known of the files before they are opened.
QString StackOpenForm::factsLine(const Subject& subject) const
{
    const ImageAttributes known = m_estimated.known(subject.names);
    if (known.type == ImageType::Unknown)
        return {};
    return stackFacts(known, subject.channels > 0 ? subject.channels : known.channels,
                      std::max(subject.timePoints, known.timePoints));
}

void StackOpenForm::calculateMemory()
{
    const Subject subject = subjectOfPage();
    m_memory->setText(unknownMemoryText());
    m_estimated.ask({subject.names}, [this, subject] {
        m_facts->setText(factsLine(subject));
        try {
            m_memory->setText(memoryLine(subject));
        } catch (const std::exception&) {
            m_memory->setText(unknownMemoryText());
        }
    });
}

void StackOpenForm::refuse(const QString& text)
{
    showMessage(this, QMessageBox::Warning, tr("File Load Error"), text);
}

bool StackOpenForm::checkFile(const QString& name)
{
    const QFileInfo file(name);
    if (!file.exists()) {
        showMessage(this, QMessageBox::Critical, tr("File does not exist"), tr("Cannot find ") + name);
        return false;
    }
    if (!file.isReadable()) {
        showMessage(this, QMessageBox::Critical, tr("Permissions error"), tr("Cannot read ") + name);
        return false;
    }
    return true;
}

void StackOpenForm::openStack()
{
    switch (const int page = m_pages->currentIndex()) {
    case SingleChannel:
        buildFileList_onePerFile();
        return;
    case MultiChannel:
        buildFileList_manyPerFile();
        return;
    case TiffSeries:
        openSeries();
        return;
    default:
        logDebug("Uh %d tab doesn't exist\n", page);
    }
}

void StackOpenForm::openWhenKnown(std::vector<QStringList> stacks, void (StackOpenForm::*next)())
{
    m_opening.ask(std::move(stacks), [this, next] {
        setWaiting(false);
        (this->*next)();
    });
    setWaiting(m_opening.isOpen());
}

void StackOpenForm::setWaiting(bool waiting)
{
    // Each of them would take the keyboard from what has it.
    if (waiting == !m_open->isEnabled())
        return;
    if (waiting)
        m_focusBefore = focusWidget();
    for (QWidget* widget : std::initializer_list<QWidget*>{m_pages, m_extension, m_open, m_details})
        widget->setEnabled(!waiting);
    if (waiting)
        m_memory->setText(tr("Looking into the files..."));
    else if (m_focusBefore != nullptr)
        m_focusBefore->setFocus();
    if (!waiting)
        calculateMemory();
}

void StackOpenForm::dropEmptyLastRows()
{
    int rows = m_table->rowCount();
    while (rows > 1 && m_channelRows[static_cast<std::size_t>(rows - 1)]->fileName().isEmpty())
        --rows;
    setNumberOfChannels(rows);
}

void StackOpenForm::buildFileList_onePerFile()
{
    std::vector<QStringList> firstFiles;
    for (const FileChooser* row : m_channelRows) {
        const QStringList first = namesIn(row->fileName(), m_timeSeries->isChecked()).mid(0, 1);
        if (!first.isEmpty())
            firstFiles.push_back(first);
    }
    openWhenKnown(std::move(firstFiles), &StackOpenForm::openOnePerFile);
}

void StackOpenForm::openOnePerFile()
{
    m_channelFiles.clear();
    dropEmptyLastRows();
    logDebug("starting to buildfilelist %d", m_table->rowCount());
    FirstChannel first;
    for (int channel = 0; channel < m_table->rowCount(); ++channel) {
        if (!addChannel(channel, first))
            return;
    }
    logDebug("************ done building file list ************");
    services().settings.stackPath = QFileInfo(m_channelRows.front()->fileName()).absolutePath();
    LoadDescription load = freshLoad(services());
    load.filesToLoad = channelsByTime(m_channelFiles, m_extension->timeStep());
    load.channels = static_cast<int>(load.filesToLoad.front().size());
    load.timePoints = static_cast<int>(load.filesToLoad.size());
    describe(load);
    startLoadOf(*this, services(), std::move(load));
}

/// Finds the files of a row. False, after a box, when they cannot be loaded with those of the first one.
bool StackOpenForm::addChannel(int channel, FirstChannel& first)
{
    const QString name = m_channelRows[static_cast<std::size_t>(channel)]->fileName();
    if (name.trimmed().isEmpty()) {
        refuse(tr("No filename specified for channel ") + QString::number(channel + 1) + tr(".  Aborting!"));
        return false;
    }
    const QStringList files = namesIn(name, m_timeSeries->isChecked());
    if (files.isEmpty()) {
        refuse(tr("The pattern ") + name + tr(" does not return any valid filenames.  Aborting!"));
        return false;
    }
    if (!checkFile(files.first()))
        return false;
    const ImageAttributes known = m_opening.known({files.first()});
    if (channel == 0)
        first = {static_cast<int>(files.size()), known.fileX, known.fileY, known.fileZ};
    if (known.fileX != first.x || known.fileY != first.y || known.fileZ != first.z) {
        const auto size = [](int x, int y, int z) { return QString("%1 y: %2 z: %3").arg(x).arg(y).arg(z); };
        refuse(tr("Sorry, but channel ") + QString::number(channel + 1) + tr(" has dimensions x: ") +
               size(known.fileX, known.fileY, known.fileZ) + tr(" , while channel 1 has dimensions x: ") +
               size(first.x, first.y, first.z) + tr(".  Aborting!"));
        return false;
    }
    if (!fitsFirst(channel, files, first))
        return false;
    m_channelFiles.push_back(files);
    return true;
}

/// A channel has a file for each time point, or one for all of them if that is wanted.
bool StackOpenForm::fitsFirst(int channel, const QStringList& files, const FirstChannel& first)
{
    const auto count = static_cast<int>(files.size());
    const QString number = QString::number(channel + 1);
    if (count == first.files)
        return true;
    if (count == 1) {
        return askQuestion(this, tr("Files to Open"),
                           tr("Do you want to load ") + files.first() + tr("\nin channel") + number +
                               tr(" as a constant?"),
                           tr("Yes"), tr("No!"));
    }
    refuse(tr("Sorry, but channel ") + number + tr(" has ") + QString::number(count) +
           tr(" files, while other channels have ") + QString::number(first.files) + tr("files.  Aborting!"));
    return false;
}

void StackOpenForm::buildFileList_manyPerFile()
{
    const QStringList files = namesIn(m_multiChooser->fileName(), m_multiTimeSeries->isChecked());
    openWhenKnown({files.mid(0, 1)}, &StackOpenForm::openManyPerFile);
}

void StackOpenForm::openManyPerFile()
{
    m_channelFiles.clear();
    const QString name = m_multiChooser->fileName();
    const bool series = m_multiTimeSeries->isChecked();
    if (name.trimmed().isEmpty()) {
        refuse(tr("No filename specified for multichannel  Aborting!"));
        return;
    }
    const QStringList files = namesIn(name, series);
    if (files.isEmpty()) {
        refuse(tr("The pattern ") + name + tr(" does not return any valid filenames.  Aborting!"));
        return;
    }
    if (series && files.size() == 1) {
        showMessage(this, QMessageBox::Critical, tr("Silly situation for multichannel"),
                    tr("It's not a time series if there's only one time point!"));
        m_multiTimeSeries->setChecked(false);
        return;
    }
    if (!checkFile(files.first()))
        return;
    LoadDescription load = freshLoad(services());
    load.filesToLoad = filesByTime(files, m_extension->timeStep());
    load.channels = std::max(1, m_opening.known({files.first()}).channels);
    load.timePoints = static_cast<int>(load.filesToLoad.size());
    describe(load);
    startLoadOf(*this, services(), std::move(load));
}

void StackOpenForm::openSeries()
{
    LoadDescription load = m_series;
    if (load.filesToLoad.empty())
        return;
    load.filesToLoad = everyStepOfGroups(load.filesToLoad, load.channels, m_extension->timeStep());
    // One element may hold all channels of the only time point.
    load.timePoints = std::max(1, static_cast<int>(load.filesToLoad.size()) / std::max(1, load.channels));
    describe(load);
    startLoadOf(*this, services(), std::move(load));
}

void StackOpenForm::describe(LoadDescription& load) const
{
    const StackOpenExtension& details = *m_extension;
    if (!m_extensionOpened) {
        load.setWholeStack(false);
        return;
    }
    load.setRange(details.first(), details.last(), details.step(), details.subsample(),
                  details.textureTarget(), details.resliceZ(), details.zSlices(), details.conserve());
    load.setVoxelDimensions(details.xDim(), details.yDim(), details.zDim());
}

void StackOpenForm::buildFileList_knownList(const std::vector<QStringList>& files, int channels,
                                            int timePoints)
{
    if (files.empty() || files.front().isEmpty())
        return;
    const QStringList& element = files.front();
    // The first name is left to the load, which says what is wrong with it.
    for (int i = 1; i < element.size(); ++i) {
        if (!checkFile(element.at(i)))
            return;
    }
    std::vector<QStringList> stacks = {{element.first()}};
    if (channels <= 0)
        stacks.push_back(element);
    m_listed.ask(std::move(stacks),
                 [this, files, channels, timePoints] { openKnownList(files, channels, timePoints); });
}

/// What stands in the form has nothing to do with it, and stays.
void StackOpenForm::openKnownList(const std::vector<QStringList>& files, int channels, int timePoints)
{
    const QStringList& element = files.front();
    const ImageType type = m_listed.known({element.first()}).type;
    if (imageFormat(type).page == OpenPage::Description) {
        refuseLeica(element.first());
        return;
    }
    services().settings.stackPath = QFileInfo(element.first()).absolutePath();
    const auto elements = static_cast<int>(files.size());
    LoadDescription load = freshLoad(services());
    load.filesToLoad = files;
    load.timePoints = timePoints > 0 ? timePoints : elements;
    load.channels = channels;
    if (channels <= 0) {
        const int found = m_listed.known(element).channels;
        load.channels = found > 1 ? found : elements;
    }
    load.setWholeStack(false);
    startLoad(*this, services(), std::move(load));
}

} // namespace tirn
