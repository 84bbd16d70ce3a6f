#pragma once

#include <memory>

#include <QPointer>
#include <QProgressDialog>

#include "app/commandline.h"
#include "app/events.h"
#include "app/stacklist.h"
#include "app/windowstage.h"
#include "threads/filethread.h"
#include "threads/probes.h"
#include "ui/main/mainform.h"

namespace tirn {

/// What loads work with. All of it outlives them.
struct LoadNeeds
{
    SceneModel& model;
    StackList& stacks;
    MainForm& mainForm;
    Settings& settings;
    Probes& probes;
    WindowStage& stage;
    std::function<ToolForm*(FormId, bool show)> form;
};

/// Loads of stacks, palettes and surfaces, whoever asks for them, and the progress that the user sees of
/// them.
class Loads : public QObject, public LoadService
{
    Q_OBJECT

public:
    /// Reports of the file thread are posted to `receiver` as events.
    Loads(const LoadNeeds& needs, QObject& receiver);
    ~Loads() override;

    bool startLoad(LoadDescription load) override;
    void chooseStack() override;
    void loadPalettes(const QStringList& names) override;
    /// Sorts the arguments once it is known which files are stacks.
    void loadFromCommandLine(const QStringList& arguments);
    /// Loads headerless files as they were loaded before.
    void loadRecentRaw(const RecentStack& stack);
    /// Asks for the file of a surface.
    void chooseSegmentation();
    /// Reads a surface and draws it in the volume; a box tells of success or failure.
    void loadSegmentation(const QString& fileName);
    void stopLoading() { m_fileThread->stopLoading(); }
    FileThread& fileThread() { return *m_fileThread; }

    void handle(const ProgressEvent& event);
    void handle(StackLoadedEvent& event);
    void showProgress(const QString& message, int value, int total);
    void resetProgress();

private:
    VolumeOptions volumeOptions() const;
    PaletteList readPalettes(const QStringList& names);
    bool fitSegmentation(Segmentation& mesh);
    void loadSorted(const QStringList& arguments);
    void loadNamed(const CommandLine& line);
    SceneModel::Edit firstLook(const ImageAttributes& stack);

    LoadNeeds m_needs;
    ProbeQuestion m_named;
    QPointer<QProgressDialog> m_progress;
    int m_lastBaseProgress = 0;
    std::unique_ptr<FileThread> m_fileThread;
};

} // namespace tirn
