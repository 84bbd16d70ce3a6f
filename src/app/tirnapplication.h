#pragma once

#include <memory>

#include <QApplication>

#include "app/jobs.h"
#include "app/loads.h"
#include "app/pictures.h"
#include "app/pointing/pointingtools.h"
#include "app/preferences.h"
#include "app/rendereventposter.h"
#include "app/stacklist.h"
#include "app/windowstage.h"
#include "threads/probes.h"
#include "ui/formtable.h"
#include "ui/main/helppages.h"
#include "ui/main/mainform.h"

namespace tirn {

/// The one object that owns everything and wires it together; it holds no algorithm of its own.
///
/// It lives on the interface thread. Other threads talk to it by posting events.
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
    TirnWidget* currentWidget() const { return m_stage->currentWidget(); }
    SceneModel& model() { return m_model; }
    const Scene& scene() const { return m_model.scene(); }
    MainForm& mainForm() { return *m_mainForm; }
    FormTable& forms() { return *m_forms; }
    StackList& stacks() { return m_stacks; }
    Loads& loads() { return *m_loads; }
    Jobs& jobs() { return *m_jobs; }
    Pictures& pictures() { return *m_pictures; }
    RenderWindows& windows() { return m_stage->windows(); }
    const GlCapabilities& card() const { return m_stage->card(); }
    const Settings& preferences() { return m_preferences.settings(); }
    Probes& probes() { return m_probes; }
    PaletteTables* paletteTables() { return &m_stage->paletteTables(); }

    /// The current volume; asking while there is one is logged as a failed assertion.
    VoxelArray* currentArray() const;
    int currentIndex() const { return scene().currentIndex; }
    int arrayCount() const { return m_stacks.count(); }
    Palette* palette(int index) const;
    bool setCurrentArray(int index) { return m_stacks.setCurrent(index); }
    void loadFromCommandLine(const QStringList& arguments) { m_loads->loadFromCommandLine(arguments); }

public Q_SLOTS:
    void closeAll() { m_stacks.closeAll(); }
    void closeStack() { closeStack(-1); }
    /// Closes a volume; -1 means the current one.
    void closeStack(int index) { m_stacks.close(index); }
    void help() { help("index.html"); }
    void help(const QString& page) { m_help.open(page, m_mainForm.get()); }
    void stopLoading() { m_loads->stopLoading(); }
    void loadSession(const QString& name);
    void loadStack() { m_loads->chooseStack(); }

Q_SIGNALS:
    void currentArrayChanged();
    void frameRecorded(int count);
    void scaleChanged(double x, double y, double z);
    void stackClosed();

protected:
    void customEvent(QEvent* event) override;

private:
    void createServices();
    void createForms();
    void connectWidgets();
    void start();
    /// Ends what is at work on volumes.
    void finishJobs();

    SceneModel m_model;
    Preferences m_preferences;
    StackList m_stacks;
    Probes m_probes;
    RenderEventPoster m_renderEvents;
    std::unique_ptr<WindowStage> m_stage;
    std::unique_ptr<MainForm> m_mainForm;
    HelpPages m_help;
    std::unique_ptr<Loads> m_loads;
    std::unique_ptr<Jobs> m_jobs;
    std::unique_ptr<Pictures> m_pictures;
    std::unique_ptr<PointingTools> m_pointing;
    std::unique_ptr<FormTable> m_forms;
};

} // namespace tirn
