#include "app/loads.h"

#include <QFileDialog>
#include <QFileInfo>
#include <QInputDialog>

#include "base/log.h"
#include "formats/names/filefilters.h"
#include "palettes/palettefile.h"
#include "scene/fitview.h"
#include "scene/sceneedits.h"
#include "ui/messages.h"
#include "ui/open/stackopenform.h"
#include "volume/meshfit.h"

namespace tirn {

namespace {

/// More lines than these make a box that is too high for the screen.
constexpr int kMostGaps = 10;

} // namespace

Loads::Loads(const LoadNeeds& needs, QObject& receiver) : m_needs(needs), m_named(needs.probes)
{
    LoadReport report;
    report.progress = [&receiver](const QString& message, int value, int total, bool done) {
        QCoreApplication::postEvent(&receiver, new ProgressEvent(message, value, total, done));
    };
    report.loaded = [&receiver](LoadedStack stack) {
        QCoreApplication::postEvent(&receiver, new StackLoadedEvent(std::move(stack)));
    };
    m_fileThread = std::make_unique<FileThread>(needs.stage.hidden().context(), std::move(report));
}

Loads::~Loads() { m_fileThread->stopAndWait(); }

VolumeOptions Loads::volumeOptions() const
{
    const RenderSettings& limits = m_needs.model.scene().settings;
    return {m_needs.stage.threadKind(), limits.texLimit2D, limits.texLimit3D, false,
            &m_needs.stage.curveTextures()};
}

bool Loads::startLoad(LoadDescription load)
{
    LoadSurroundings surroundings;
    surroundings.options = volumeOptions();
    surroundings.defaultEncode = m_needs.settings.defaultEncode;
    surroundings.paletteCount = static_cast<int>(m_needs.model.scene().palettes.size());
    surroundings.paletteGeneration = static_cast<PaletteGeneration>(m_needs.settings.paletteGeneration);
    surroundings.paletteTables = &m_needs.stage.paletteTables();
    return m_fileThread->startLoad(std::move(load), std::move(surroundings));
}

void Loads::chooseStack()
{
    const QString name = QFileDialog::getOpenFileName(&m_needs.mainForm, "Select first stack",
                                                      m_needs.settings.stackPath, stackFileFilter());
    if (name.trimmed().isEmpty())
        return;
    if (auto* form = static_cast<StackOpenForm*>(m_needs.form(FormId::Stack, false)))
        form->setup(name);
}

void Loads::loadFromCommandLine(const QStringList& arguments)
{
    if (arguments.size() < 2)
        return;
    std::vector<QStringList> candidates;
    parseCommandLine(arguments, [&candidates](const QString& name) {
        candidates.push_back({name});
        return false;
    });
    m_named.ask(std::move(candidates), [this, arguments] { loadSorted(arguments); });
}

void Loads::loadSorted(const QStringList& arguments)
{
    m_needs.stage.makeCurrent();
    const CommandLine line = parseCommandLine(
        arguments, [this](const QString& name) { return m_named.known({name}).type != ImageType::Unknown; });
    if (!line.session.isEmpty()) {
        Q_EMIT m_needs.mainForm.loadSession(line.session);
        return;
    }
    QStringList missing;
    for (const QString& name : line.missing)
        missing.append("Cannot find " + name);
    if (!missing.isEmpty())
        showMessage(&m_needs.mainForm, QMessageBox::Warning, "File does not exist", missing.join('\n'));
    for (const QString& name : line.unknown) {
        logDebug("I have no idea what this is! %s", qPrintable(name));
        const QStringList reasons = m_named.known({name}).notes;
        m_needs.mainForm.showNote("I have no idea what this is! " + name +
                                  (reasons.isEmpty() ? QString() : ": " + reasons.join(", ")));
    }
    // Two arguments were once all that there could be: a stack and a palette.
    if (arguments.size() == 3 && line.palettes.size() == 1 && line.stacks.isEmpty() && line.missing.isEmpty())
        logDebug("Usage: %s <stack file> <palette file>\n", qPrintable(arguments.first()));
    if (!line.palettes.isEmpty() || !line.stacks.isEmpty())
        loadNamed(line);
}

void Loads::loadNamed(const CommandLine& line)
{
    const auto before = static_cast<int>(m_needs.model.scene().palettes.size());
    PaletteList palettes = readPalettes(line.palettes);
    while (before + static_cast<int>(palettes.size()) < line.stacks.size())
        palettes.push_back(std::make_unique<Palette>("", 8, &m_needs.stage.paletteTables()));
    m_needs.stacks.addPalettes(std::move(palettes));
    if (line.stacks.isEmpty())
        return;
    LoadDescription load(m_needs.settings.defaultEncode);
    // What is named is encoded the better way, whatever the preference.
    load.textureTarget = GL_TEXTURE_2D;
    load.filesToLoad = {line.stacks};
    NamedLoad named;
    named.firstPalette = before;
    named.paletteIds.assign(line.paletteIds.begin(), line.paletteIds.end());
    if (line.stacks.size() == 1 && line.palettes.size() == 1 && line.paletteIds.empty())
        named.palette = line.palettes.first();
    load.named = std::move(named);
    startLoad(std::move(load));
}

void Loads::loadRecentRaw(const RecentStack& stack)
{
    LoadDescription load(m_needs.settings.defaultEncode);
    load.filesToLoad = stack.files;
    load.timePoints = static_cast<int>(stack.files.size());
    const RawLayout& raw = *stack.raw;
    load.setRaw(raw.headerOffset, raw.x, raw.y, raw.z, stack.channels, raw.bitDepth);
    load.rawLayout.swapBytes = raw.swapBytes;
    if (!startLoad(std::move(load)))
        m_needs.mainForm.showNote("Another stack is being loaded.");
}

PaletteList Loads::readPalettes(const QStringList& names)
{
    m_needs.stage.makeCurrent();
    PaletteList palettes;
    for (const QString& name : names) {
        const QFileInfo info(name);
        PaletteFile file(name);
        if (file.read()) {
            palettes.push_back(file.makePalette(&m_needs.stage.paletteTables()));
            palettes.back()->setPath(info.absolutePath());
            m_needs.mainForm.paletteLoaded(info.absoluteFilePath());
        } else if (!info.exists()) {
            showMessage(&m_needs.mainForm, QMessageBox::Warning, "File does not exist",
                        "Cannot find " + name);
        } else {
            showMessage(&m_needs.mainForm, QMessageBox::Warning, "File load error",
                        "The file " + name + " does not use a known palett file format.");
        }
    }
    return palettes;
}

void Loads::loadPalettes(const QStringList& names)
{
    if (names.isEmpty())
        return;
    m_needs.settings.palettePath = QFileInfo(names.first()).absolutePath();
    m_needs.stacks.addPalettes(readPalettes(names));
}

void Loads::chooseSegmentation()
{
    const QString name =
        QFileDialog::getOpenFileName(&m_needs.mainForm, "Load Segmentation", m_needs.settings.stackPath,
                                     "Stereolitho (*.stl *.stla *.stlb);; All Files (*)");
    if (!name.isEmpty())
        loadSegmentation(name);
}

void Loads::loadSegmentation(const QString& fileName)
{
    auto mesh = std::make_unique<Segmentation>();
    if (!mesh->load(fileName)) {
        showMessage(&m_needs.mainForm, QMessageBox::Warning, "Load Error", "Failed to load " + fileName);
        return;
    }
    if (!fitSegmentation(*mesh))
        return;
    logDebug("Segmentation %s loaded.", qPrintable(fileName));
    m_needs.model.editLists(Change::Look, [&](Scene& scene) {
        // One surface is drawn: the newest.
        scene.segmentations.clear();
        scene.segmentations.push_back(std::move(mesh));
    });
    showMessage(&m_needs.mainForm, QMessageBox::Information, "Segmentation", fileName + " loaded.");
}

/// How a stack shows itself when it comes, and a note where that is not as its voxels are.
SceneModel::Edit Loads::firstLook(const ImageAttributes& stack)
{
    const bool isFirst = m_needs.stacks.count() == 0;
    const bool fits = m_needs.settings.fitOnOpen;
    const bool stretches =
        m_needs.settings.stretchOnOpen && stack.hasWords() && stack.realBitDepth() < stack.bitDepth;
    if (stretches)
        m_needs.mainForm.showNote(MainForm::tr("Stretched: %1 of %2 bits used (Edit menu)")
                                      .arg(stack.realBitDepth())
                                      .arg(stack.bitDepth));
    return [=](Scene& scene) {
        if (isFirst)
            resetView(scene);
        if (fits)
            fitView(scene);
        if (stretches)
            scene.view.autoBitDepth = true;
    };
}

/// Asks how a surface lies in the current volume; false when the user leaves it. Without a volume its
/// coordinates are drawing units.
bool Loads::fitSegmentation(Segmentation& mesh)
{
    const VoxelArray* array = m_needs.model.scene().current();
    if (array == nullptr)
        return true;
    const std::optional<std::array<double, 3>> voxelSize = drawnVoxelSize(array->stack(), array->sliceStep);
    QStringList fits = {"volume", "voxels"};
    if (voxelSize)
        fits.append("microns");
    bool chosen = false;
    const QString fit = QInputDialog::getItem(&m_needs.mainForm, "Load Segmentation",
                                              "Fit the surface to the stack's", fits, 0, false, &chosen);
    if (!chosen)
        return false;
    constexpr MeshFit kFits[] = {MeshFit::Volume, MeshFit::Voxels, MeshFit::Microns};
    fitMesh(mesh, kFits[fits.indexOf(fit)], array->geometry(),
            voxelSize.value_or(std::array<double, 3>{1, 1, 1}));
    return true;
}

void Loads::handle(StackLoadedEvent& event)
{
    logDebug("Made it to stack Loaded!!!");
    LoadedStack& stack = event.stack;
    RecentStack recent;
    recent.channels = stack.array->channelCount();
    recent.timePoints = stack.array->timePointCount();
    recent.files = std::move(stack.files);
    recent.raw = stack.raw;
    // Nobody has to save what nobody made.
    for (const auto& palette : stack.palettes)
        palette->setModified(false);
    const SceneModel::Edit look = firstLook(stack.array->stack());
    m_needs.stacks.add(std::move(stack.array), std::move(stack.palettes), look);
    m_needs.mainForm.addRecentStack(recent);
    if (!stack.gaps.isEmpty())
        showMessage(&m_needs.mainForm, QMessageBox::Warning, "File load error",
                    MainForm::tr("Some of the stack is missing, and shown as black.\n") +
                        stack.gaps.mid(0, kMostGaps).join('\n'));
}

void Loads::handle(const ProgressEvent& event)
{
    if (event.done) {
        resetProgress();
        if (!event.message.isEmpty())
            showMessage(&m_needs.mainForm, QMessageBox::Warning, "File load error", event.message);
        return;
    }
    if (event.total == -1) {
        showProgress(event.message, event.progress + m_lastBaseProgress, -1);
        return;
    }
    m_lastBaseProgress = event.progress;
    showProgress(event.message, event.progress, event.total);
}

void Loads::resetProgress()
{
    if (m_progress != nullptr)
        m_progress->reset();
}

void Loads::showProgress(const QString& message, int value, int total)
{
    if (m_progress == nullptr) {
        m_progress = new QProgressDialog("Loading...", "Cancel", 0, 0, &m_needs.mainForm);
        m_progress->setObjectName("progress");
        m_progress->setWindowTitle("Tirn");
        m_progress->setAutoReset(true);
        m_progress->setAutoClose(true);
        // Loads that take no time leave the dialog unseen.
        m_progress->setMinimumDuration(400);
        connect(m_progress, &QProgressDialog::canceled, this, &Loads::stopLoading);
    }
    if (!message.isEmpty())
        m_progress->setLabelText(message);
    if (total >= 0 && m_progress->maximum() != total)
        m_progress->setMaximum(total);
    if (m_progress->value() != value)
        m_progress->setValue(value);
}

} // namespace tirn
