#pragma once

#include "app/windowstage.h"
#include "render/picturemaker.h"
#include "render/snapshots.h"
#include "session/settings.h"
#include "ui/formservices.h"

namespace tirn {

/// Pictures of what the viewer shows, and where they go.
class Pictures : public PictureService
{
public:
    /// All of it outlives this.
    Pictures(SceneModel& model, WindowStage& stage, const Settings& settings)
        : m_model(model), m_stage(stage), m_settings(settings)
    {}

    /// The picture that a capture filled and that a writer takes and resets.
    QImage& image() { return m_image; }
    /// Whether pictures are drawn outside of the window; otherwise they are what the window shows.
    bool canDrawOffScreen() const { return m_stage.card().hasPBuffer && m_settings.usePBuffers; }
    /// Takes a picture of the current volume; null when that is not possible or was cancelled.
    bool capture(const PictureRequest& request, const Progress& progress = {});
    /// For composites of pictures of this size; without off-screen drawing they have the window's.
    SnapshotSource snapshotSource(QSize size, const Progress& progress = {});
    QImage grabWindow() override;
    void copyWindow();
    /// Puts what the window shows on paper; false when there is no printer, or printing failed.
    bool printWindow(QWidget* parent);

    /// Writers of `image`; a text of what went wrong, empty when all is well.
    QString savePng(const QString& name, int dpi);
    QString saveRaw(const QString& name);
    QString saveTiff(const QString& name, int dpi);
    /// Asks for a printer; false when there is none or printing failed.
    bool printImage(QWidget* parent);

private:
    SceneModel& m_model;
    WindowStage& m_stage;
    const Settings& m_settings;
    QImage m_image;
};

} // namespace tirn
