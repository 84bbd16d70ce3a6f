// Pictures of what the viewer shows, and where they go.

#include <QPrintDialog>

#include "app/tirnapplication.h"
#include "base/log.h"
#include "pictures/picturesize.h"
#include "pictures/picturewriter.h"
#include "render/picturemaker.h"
#include "ui/pictureprinter.h"

namespace tirn {

bool TirnApplication::canDrawOffScreen() const { return m_card.hasPBuffer && m_preferences.usePBuffers; }

bool TirnApplication::capture(const PictureRequest& request, const Progress& progress)
{
    m_image = {};
    if (m_scene.current() == nullptr)
        return false;
    if (canDrawOffScreen()) {
        m_currentWidget->stopAndWait();
        m_hidden->makeCurrent();
        PictureMaker maker(m_currentWidget->renderThread());
        m_image = maker.draw(request, progress);
        m_currentWidget->requestFrame();
        if (!m_image.isNull())
            logDebug("doing Pbuffer");
        if (!m_image.isNull() || maker.error().isEmpty())
            return !m_image.isNull();
        logWarning("%s", qPrintable(maker.error()));
    }
    if (m_currentWidget->surface().isReady())
        m_image = m_currentWidget->renderThread().grabNextFrame();
    return !m_image.isNull();
}

SnapshotSource TirnApplication::snapshotSource(QSize size, const Progress& progress)
{
    const QSize frame = canDrawOffScreen() ? size : m_currentWidget->surface().size();
    return {m_scene, m_currentWidget->viewState(), frame,
            [this, frame, progress] {
                capture({frame, snapshotOverlayScale(frame)}, progress);
                return std::exchange(m_image, {});
            },
            [this](double x, double y, double z) { m_currentWidget->changeVoxelRotation(x, y, z); }};
}

QString TirnApplication::savePng(const QString& name, int dpi)
{
    return tirn::savePng(std::exchange(m_image, {}), name, dpi);
}

QString TirnApplication::saveRaw(const QString& name)
{
    return tirn::saveRaw(std::exchange(m_image, {}), name);
}

QString TirnApplication::saveTiff(const QString& name, int dpi)
{
    return tirn::saveTiff(std::exchange(m_image, {}), name, dpi);
}

bool TirnApplication::printImage()
{
    const QImage picture = std::exchange(m_image, {});
    QPrinter printer(QPrinter::HighResolution);
    QPrintDialog dialog(&printer, m_mainForm.get());
    return dialog.exec() == QDialog::Accepted && printPicture(picture, printer);
}

} // namespace tirn
