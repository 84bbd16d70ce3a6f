// Volumes and palettes: how they come, become current and go.

#include <algorithm>

#include <QClipboard>
#include <QFileDialog>
#include <QFileInfo>

#include "app/tirnapplication.h"
#include "base/log.h"
#include "base/stopwatch.h"
#include "formats/filefilters.h"
#include "formats/imageio.h"
#include "palettes/palettefile.h"
#include "ui/managerform.h"
#include "ui/stackopenform.h"

namespace tirn {

VoxelArray* TirnApplication::currentArray() const
{
    VoxelArray* array = m_scene.current();
    // The text has the condition of the opposite case.
    if (array != nullptr) {
        static bool reported = false;
        if (!std::exchange(reported, true))
            logAssertion("currentIndex < 0 || currentIndex >= (int) arrays.size()", "tirnapp", __LINE__);
    }
    return array;
}

Palette* TirnApplication::palette(int index) const
{
    const bool valid = index >= 0 && index < static_cast<int>(m_scene.palettes.size());
    return valid ? m_scene.palettes[static_cast<std::size_t>(index)].get() : nullptr;
}

bool TirnApplication::setCurrentArray(int index)
{
    if (!m_scene.arrays.empty() && (index < 0 || index >= arrayCount()))
        return false;
    {
        const std::scoped_lock lock(m_scene.mutex);
        m_scene.currentIndex = m_scene.arrays.empty() ? -1 : index;
    }
    arrayBecameCurrent();
    return !m_scene.arrays.empty() || index == -1;
}

/// What happens whenever another volume, or none, becomes the current one, whoever asked for it.
void TirnApplication::arrayBecameCurrent()
{
    m_currentWidget->currentArrayChanged();
    Q_EMIT currentArrayChanged();
}

bool TirnApplication::startLoad()
{
    LoadSurroundings surroundings;
    surroundings.options = volumeOptions();
    surroundings.defaultEncode = m_preferences.defaultEncode;
    surroundings.paletteCount = static_cast<int>(m_scene.palettes.size());
    surroundings.paletteGeneration = static_cast<PaletteGeneration>(m_preferences.paletteGeneration);
    surroundings.paletteTables = m_paletteTables.get();
    return m_fileThread->startLoad(std::move(surroundings));
}

VolumeOptions TirnApplication::volumeOptions() const
{
    return {m_currentWidget->threadKind(), m_renderSettings.texLimit2D, m_renderSettings.texLimit3D, false,
            m_curveTextures.get()};
}

void TirnApplication::addArray(std::unique_ptr<VoxelArray> array, const std::vector<QStringList>& files,
                               PaletteList palettes)
{
    m_currentWidget->stopAndWait();
    const bool listChanges = !palettes.empty() || m_scene.palettes.empty();
    for (auto& palette : palettes)
        m_scene.palettes.push_back(std::move(palette));
    if (m_scene.palettes.empty())
        m_scene.palettes.push_back(std::make_unique<Palette>("", 8, m_paletteTables.get()));
    if (listChanges)
        Q_EMIT paletteListChanged();
    // Palettes may have been closed while the stack was loading.
    for (Channel& channel : array->channels()) {
        if (palette(channel.display.palette) == nullptr)
            channel.display.palette = 0;
    }
    const int channels = array->channelCount();
    const int timePoints = array->timePointCount();
    m_scene.arrays.push_back(std::move(array));
    setCurrentArray(arrayCount() - 1);
    if (ManagerForm* manager = managerForm())
        manager->addItem(arrayCount() - 1);
    m_mainForm->addRecentStack(files, channels, timePoints);
}

void TirnApplication::loadFromCommandLine(const QStringList& arguments)
{
    if (arguments.size() < 2)
        return;
    m_hidden->makeCurrent();
    const CommandLine line = parseCommandLine(
        arguments, [](const QString& name) { return ImageIO::probeType(name) != ImageType::Unknown; });
    if (!line.session.isEmpty()) {
        loadSession(line.session);
        return;
    }
    for (const QString& name : line.missing)
        showWarning("File does not exist", "Cannot find " + name);
    for (const QString& name : line.unknown) {
        logDebug("I have no idea what this is! %s", qPrintable(name));
        m_mainForm->showNote("I have no idea what this is! " + name);
    }
    if (line.palettes.isEmpty() && line.stacks.isEmpty())
        return;
    m_currentWidget->stopAndWait();
    const auto before = static_cast<int>(m_scene.palettes.size());
    readPalettes(line.palettes);
    while (static_cast<int>(m_scene.palettes.size()) < line.stacks.size())
        m_scene.palettes.push_back(std::make_unique<Palette>("", 8, m_paletteTables.get()));
    m_currentWidget->requestFrame();
    if (line.stacks.isEmpty())
        return;
    LoadRequest request;
    request.names = line.stacks;
    request.options = volumeOptions();
    request.firstPalette = before;
    request.paletteCount = static_cast<int>(m_scene.palettes.size());
    request.paletteIds.assign(line.paletteIds.begin(), line.paletteIds.end());
    m_fileThread->load(std::move(request));
}

void TirnApplication::readPalettes(const QStringList& names)
{
    for (const QString& name : names) {
        const QFileInfo info(name);
        PaletteFile file(name);
        if (file.read()) {
            m_scene.palettes.push_back(file.makePalette(m_paletteTables.get()));
            m_scene.palettes.back()->setPath(info.absolutePath());
            m_mainForm->paletteLoaded(info.absoluteFilePath());
        } else if (!info.exists()) {
            showWarning("File does not exist", "Cannot find " + name);
        } else {
            showWarning("File load error", "The file " + name + " does not use a known palett file format.");
        }
    }
    Q_EMIT paletteListChanged();
}

void TirnApplication::loadPalettes(const QStringList& names)
{
    if (names.isEmpty())
        return;
    m_preferences.palettePath = QFileInfo(names.first()).absolutePath();
    m_currentWidget->stopAndWait();
    m_hidden->makeCurrent();
    readPalettes(names);
    m_currentWidget->requestFrame();
}

void TirnApplication::loadSession(const QString& name)
{
    showWarning("Session", "Sessions cannot be read in this version: " + name);
}

void TirnApplication::loadStack()
{
    const QString name = QFileDialog::getOpenFileName(m_mainForm.get(), "Select first stack",
                                                      m_preferences.stackPath, stackFileFilter());
    if (!name.trimmed().isEmpty())
        stackOpenForm().setup(name);
}

void TirnApplication::loadSegmentation()
{
    const QString name =
        QFileDialog::getOpenFileName(m_mainForm.get(), "Load Segmentation", m_preferences.stackPath,
                                     "Stereolitho (*.stl *.stla *.stlb);; All Files (*)");
    if (!name.isEmpty())
        loadSegmentation(name);
}

void TirnApplication::loadSegmentation(const QString& fileName)
{
    auto mesh = std::make_unique<Segmentation>();
    if (!mesh->load(fileName)) {
        showWarning("Load Error", "Failed to load " + fileName);
        return;
    }
    logDebug("Segmentation %s loaded.", qPrintable(fileName));
    m_currentWidget->stopAndWait();
    m_scene.segmentations.clear();
    m_scene.segmentations.push_back(std::move(mesh));
    m_currentWidget->requestFrame();
    showBox(QMessageBox::Information, "Segmentation", fileName + " loaded.");
}

void TirnApplication::closeAll()
{
    if (m_scene.batchMode)
        return;
    Stopwatch timer;
    finishJobs();
    m_currentWidget->stopAndWait();
    {
        const std::scoped_lock lock(m_scene.mutex);
        m_scene.currentIndex = -1;
    }
    logDebug("stopping threads %s", qPrintable(plainNumber(timer.restart())));
    m_hidden->makeCurrent();
    while (!m_scene.arrays.empty()) {
        if (ManagerForm* manager = managerForm())
            manager->removeItem(arrayCount() - 1);
        m_scene.arrays.pop_back();
    }
    logDebug("deleting stacks %s", qPrintable(plainNumber(timer.restart())));
    m_scene.palettes.clear();
    Q_EMIT paletteListChanged();
    m_shaders->zCorrection = false;
    m_mainForm->updateZCorrectionStatus(false);
    arrayBecameCurrent();
    Q_EMIT stackClosed();
    logDebug("Everything closed");
    m_currentWidget->resetView();
}

void TirnApplication::closeStack(int index)
{
    const int count = arrayCount();
    if (m_scene.batchMode || count == 0 || index >= count)
        return;
    const int old = index < 0 ? m_scene.currentIndex : index;
    if (old < 0)
        return;
    finishJobs();
    m_currentWidget->stopAndWait();
    const bool wasCurrent = old == m_scene.currentIndex;
    int current = m_scene.currentIndex;
    // A row that goes from below the current one takes the current one down with it.
    if (old < current || (wasCurrent && old == count - 1))
        --current;
    if (count > 1 && current < 0)
        current = 0;
    logDebug("new current %d old %d stacks %d", current, old, count);
    if (ManagerForm* manager = managerForm())
        manager->removeItem(old);
    m_hidden->makeCurrent();
    m_scene.arrays.erase(m_scene.arrays.begin() + old);
    setCurrentArray(current);
    logDebug("after delete new current %d old %d stack %d", m_scene.currentIndex, old, arrayCount());
    if (m_scene.arrays.empty())
        Q_EMIT stackClosed();
    m_currentWidget->requestFrame();
}

void TirnApplication::stopLoading() { m_fileThread->stopLoading(); }

void TirnApplication::help(const QString& page) { m_help.open(page, m_mainForm.get()); }

void TirnApplication::stretchToUsedBits(bool on)
{
    m_shaders->autoBitDepth = on;
    m_currentWidget->requestShaderRebuild();
    m_currentWidget->requestFrame();
}

QImage TirnApplication::grabWindow()
{
    if (m_scene.current() == nullptr || !m_currentWidget->surface().isReady())
        return {};
    return m_currentWidget->renderThread().grabNextFrame();
}

void TirnApplication::copyPicture()
{
    const QImage picture = grabWindow();
    if (picture.isNull())
        return;
    logDebug("putting on clipboard");
    clipboard()->setImage(picture);
}

void TirnApplication::print()
{
    m_image = grabWindow();
    if (!m_image.isNull())
        printImage();
}

} // namespace tirn
