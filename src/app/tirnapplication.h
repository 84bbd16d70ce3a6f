#pragma once

#include <memory>
#include <vector>

#include <QApplication>
#include <QMessageBox>
#include <QPointer>
#include <QProgressDialog>
#include <QSettings>
#include <QStackedWidget>

#include "app/commandline.h"
#include "app/events.h"
#include "gl/glinfo.h"
#include "gl/gltables.h"
#include "render/picturemaker.h"
#include "render/snapshots.h"
#include "render/tirnwidget.h"
#include "session/settings.h"
#include "threads/exportthread.h"
#include "threads/filethread.h"
#include "threads/filterthread.h"
#include "ui/formtable.h"
#include "ui/helppages.h"
#include "ui/mainform.h"
#include "ui/openservices.h"

namespace tirn {

class JobProgressForm;
class ManagerForm;
class StackOpenForm;

/// The one object that owns everything: volumes, palettes, widgets, forms, threads, settings. It wires them
/// together and holds no algorithm of its own.
///
/// It lives on the interface thread. Other threads talk to it by posting events. The number of arrays and
/// palettes changes only here and only while the render thread is stopped.
class TirnApplication : public QApplication
{
    Q_OBJECT

public:
    TirnApplication(int& argc, char** argv);
    ~TirnApplication() override;

    /// The single instance.
    static TirnApplication& instance();

    /// Probes the card and makes windows, forms and threads. False when the toolkit has no OpenGL; a card
    /// without a usable context ends the program.
    bool initializeGl();
    /// Null when the card was refused.
    TirnWidget* currentWidget() const { return m_currentWidget; }
    MainForm& mainForm() { return *m_mainForm; }
    GlInfo& glInfo() { return *m_glInfo; }
    const GlCapabilities& card() const { return m_card; }
    Shaders& shaders() { return *m_shaders; }
    Scene& scene() { return m_scene; }
    RenderLock& renderLock() { return m_renderLock; }
    RenderSettings& renderSettings() { return m_renderSettings; }
    const Settings& preferences() const { return m_preferences; }
    FileThread& fileThread() { return *m_fileThread; }
    FilterThread& filterThread() { return *m_filterThread; }
    ExportThread& saveThread() { return *m_saveThread; }
    FormTable& forms() { return m_forms; }
    PaletteTables* paletteTables() { return m_paletteTables.get(); }

    /// The current volume; asking while there is none is logged as a failed assertion, and gives null.
    VoxelArray* currentArray() const;
    int currentIndex() const { return m_scene.currentIndex; }
    int arrayCount() const { return static_cast<int>(m_scene.arrays.size()); }
    Palette* palette(int index) const;
    /// Makes a volume current. False when there is none of this index; with no volumes at all whether the
    /// index is -1.
    bool setCurrentArray(int index);
    /// Files a loaded volume with the palettes that came with it, and makes it current.
    void addArray(std::unique_ptr<VoxelArray> array, const std::vector<QStringList>& files,
                  PaletteList palettes = {});
    /// Starts the load that the file thread's description describes; false when one is under way.
    bool startLoad();
    void loadFromCommandLine(const QStringList& arguments);
    /// Reads a surface and draws it in the volume; a box tells of success or failure.
    void loadSegmentation(const QString& fileName);

    /// The picture that a capture filled and that a writer takes and resets.
    QImage& image() { return m_image; }
    /// Whether pictures are drawn outside of the window; otherwise they are what the window shows.
    bool canDrawOffScreen() const;
    /// Takes a picture of the current volume; null when that is not possible or was cancelled.
    bool capture(const PictureRequest& request, const Progress& progress = {});
    /// For composites of pictures of this size; without off-screen drawing they have the window's.
    SnapshotSource snapshotSource(QSize size, const Progress& progress = {});
    /// Writers of `image`; a text of what went wrong, empty when all is well.
    QString savePng(const QString& name, int dpi);
    QString saveRaw(const QString& name);
    QString saveTiff(const QString& name, int dpi);
    /// Asks for a printer; false when there is none or printing failed.
    bool printImage();

public Q_SLOTS:
    void closeAll();
    void closeStack() { closeStack(-1); }
    /// Closes a volume; -1 means the current one.
    void closeStack(int index);
    void help() { help("index.html"); }
    void help(const QString& page);
    void stopLoading();
    /// Appends the palettes of files; a box tells of those that cannot be read.
    void loadPalettes(const QStringList& names);
    void loadSession(const QString& name);
    /// Asks for the first file of a stack, and opens the form that loads it.
    void loadStack();
    void createAboutForm() { createAboutForm(true); }
    void createAboutForm(bool show) { m_forms.create(FormId::About, show); }
    void createImportStackForm() { createImportStackForm(true); }
    void createImportStackForm(bool show) { m_forms.create(FormId::ImportStack, show); }
    void createManagerForm() { createManagerForm(true); }
    void createManagerForm(bool show) { m_forms.create(FormId::Manager, show); }
    void createPreferencesForm() { createPreferencesForm(true); }
    void createPreferencesForm(bool show) { m_forms.create(FormId::Preferences, show); }
    /// Asks for the file of a surface.
    void loadSegmentation();
    void stretchToUsedBits(bool on);
    void copyPicture();
    /// Asks for the parameters of a filter and runs it on the current stack.
    void filter(tirn::FilterOperation operation);
    /// Asks for a name and writes the current stack.
    void exportStack(tirn::ExportMode mode);
    /// Puts what the window shows on paper.
    void print();

Q_SIGNALS:
    void currentArrayChanged();
    void frameRecorded(int count);
    void scaleChanged(double x, double y, double z);
    void stackClosed();
    void paletteListChanged();
    void updateMemoryStatus();

protected:
    bool event(QEvent* event) override;
    void customEvent(QEvent* event) override;

private:
    struct StackOnTheWay
    {
        QString name;
        int done;
        int total;
    };

    void colourInputs();
    void readCapabilities();
    void createWidgets();
    void createStereoWidget(const WidgetServices& services);
    void connectWidgets();
    void connectActions();
    void buildContextMenu();
    void buildVolumesMenu(QMenu& menu);
    void placeMainForm();
    void createForms();
    FormRow aboutRow();
    FormRow importStackRow();
    FormRow managerRow();
    FormRow preferencesRow();
    /// Null while it was not made.
    ManagerForm* managerForm() const;
    FormRow sequenceTiffRow();
    FormRow stackRow();
    /// Made when it is missing.
    StackOpenForm& stackOpenForm();
    OpenServices openServices();
    void createThreads();
    void createJobThreads();
    /// With a stack and no other job; the status bar tells of that one.
    bool canStartJob();
    void exportFinished(const JobResult& result);
    void finishJobs();
    /// False, with the progress in front, while an export is being written.
    bool mayClose();
    VolumeOptions volumeOptions() const;
    void readPreferences();
    void usePreferences(const Settings& settings);
    void storePreferences(const Settings& settings);
    void start();
    /// What the window shows; null without a stack.
    QImage grabWindow();
    void readPalettes(const QStringList& names);
    void arrayBecameCurrent();
    void handleProgress(const ProgressEvent& event);
    void handleImageProgress(const ImageProgressEvent& event);
    void handleReencodeDone(const ReencodeDoneEvent& event);
    QProgressDialog& progressDialog();
    void showProgress(const QString& message, int value, int total);
    void showWarning(const QString& title, const QString& text);
    void showBox(QMessageBox::Icon icon, const QString& title, const QString& text);

    Scene m_scene;
    RenderLock m_renderLock;
    RenderSettings m_renderSettings;
    Settings m_preferences;
    std::unique_ptr<QSettings> m_settings;
    GlCapabilities m_card;
    /// The context that all others share their names with.
    std::unique_ptr<HiddenContext> m_hidden;
    std::unique_ptr<GlInfo> m_glInfo;
    std::unique_ptr<Shaders> m_shaders;
    std::unique_ptr<RenderEvents> m_renderEvents;
    std::unique_ptr<GlPaletteTables> m_paletteTables;
    std::unique_ptr<GlCurveTextures> m_curveTextures;
    std::unique_ptr<MainForm> m_mainForm;
    /// Both belong to the main form, and are the same where there is no stereo.
    QPointer<TirnWidget> m_regularWidget;
    QPointer<TirnWidget> m_stereoWidget;
    QPointer<TirnWidget> m_currentWidget;
    QPointer<QStackedWidget> m_widgetStack;
    QPointer<QProgressDialog> m_progressDialog;
    FormTable m_forms;
    HelpPages m_help;
    std::unique_ptr<ExportThread> m_saveThread;
    std::unique_ptr<FileThread> m_fileThread;
    std::unique_ptr<FilterThread> m_filterThread;
    QPointer<JobProgressForm> m_filterProgress;
    QPointer<JobProgressForm> m_exportProgress;
    int m_lastBaseProgress = 0;
    QImage m_image;
};

} // namespace tirn
