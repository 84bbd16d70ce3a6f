#pragma once

#include <functional>

#include <QImage>

#include "base/jobresult.h"
#include "base/progress.h"
#include "gl/glinfo.h"
#include "palettes/palettelist.h"
#include "scene/scenemodel.h"
#include "session/settings.h"
#include "threads/loaddescription.h"
#include "threads/probes.h"
#include "ui/formid.h"

namespace tirn {

class ToolForm;

/// Loads, whoever asks for them.
class LoadService
{
public:
    virtual ~LoadService() = default;
    /// False, with nothing changed, when another load is under way.
    virtual bool startLoad(LoadDescription load) = 0;
    /// Asks for the first file of a stack, and opens the form that loads it.
    virtual void chooseStack() = 0;
    /// Appends the palettes of files, in their order; a box tells of those that cannot be read.
    virtual void loadPalettes(const QStringList& names) = 0;
};

/// The list of loaded volumes.
class StackService
{
public:
    virtual ~StackService() = default;
    /// False when there is no such volume.
    virtual bool makeCurrent(StackId id) = 0;
    virtual void closeStack(StackId id) = 0;
};

/// The list of palettes.
class PaletteService
{
public:
    virtual ~PaletteService() = default;
    /// Where new ones go on the card; null where there is none.
    virtual PaletteTables* tables() = 0;
    virtual void addPalettes(PaletteList palettes) = 0;
    /// Takes one that no channel uses off the list.
    virtual void closePalette(int index) = 0;
};

/// Long work on the voxels of a stack; one job at a time.
class JobService
{
public:
    using Job = std::function<JobResult(const Progress&)>;

    virtual ~JobService() = default;
    /// Runs a job on another thread, with its progress in front, and calls `finished` on the interface thread
    /// afterwards. False, with a note in the status bar, while another job is at work.
    virtual bool runJob(const QString& caption, const QString& text, Job job,
                        std::function<void(const JobResult&)> finished) = 0;
};

/// Pictures of what is shown.
class PictureService
{
public:
    virtual ~PictureService() = default;
    /// What the window shows; null without a stack.
    virtual QImage grabWindow() = 0;
};

/// The window that shows the picture.
class WindowService
{
public:
    virtual ~WindowService() = default;
    virtual QSize pictureSize() const = 0;
    virtual void changeWindowDimensions(int width, int height) = 0;
    /// Keeps width and height in the ratio that they have now.
    virtual void toggleWindowAspectRatio(bool on) = 0;
    /// Whether there is one with a picture for each eye.
    virtual bool hasStereo() const = 0;
    /// Tells of each new size while the context lives.
    virtual void whenResized(QObject* context, std::function<void(int width, int height)> told) = 0;
};

/// What forms share with the program around them. All of it outlives the forms.
struct FormServices
{
    SceneModel& model;
    LoadService& loads;
    StackService& stacks;
    PaletteService& palettes;
    JobService& jobs;
    PictureService& pictures;
    WindowService& window;
    Probes& probes;
    /// Holds the directories that all file dialogs share, and the preferences.
    Settings& settings;
    const GlCapabilities& card;
    std::function<void(const Settings&)> storePreferences;
    /// Another form, made if need be, and shown or left as it is. Null when it cannot be made.
    std::function<ToolForm*(FormId, bool show)> form;
    std::function<void(const QString& page)> help;
};

} // namespace tirn
