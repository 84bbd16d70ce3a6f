#include "app/pictures.h"

#include <utility>

#include <QApplication>
#include <QClipboard>
#include <QPrintDialog>

#include "base/log.h"
#include "pictures/picturesize.h"
#include "pictures/picturewriter.h"
#include "ui/pictures/pictureprinter.h"

namespace tirn {

bool Pictures::capture(const PictureRequest& request, const Progress& progress)
{
    m_image = {};
    if (m_model.scene().current() == nullptr)
        return false;
    if (canDrawOffScreen()) {
        m_stage.currentWidget()->stopAndWait();
        m_stage.makeCurrent();
        PictureMaker maker(m_stage.currentWidget()->renderThread());
        m_image = maker.draw(request, progress);
        m_model.redraw();
        if (!m_image.isNull())
            logDebug("doing Pbuffer");
        if (!m_image.isNull() || maker.error().isEmpty())
            return !m_image.isNull();
        logWarning("%s", qPrintable(maker.error()));
    }
    m_image = grabWindow();
    return !m_image.isNull();
}

SnapshotSource Pictures::snapshotSource(QSize size, const Progress& progress)
{
    const QSize frame = canDrawOffScreen() ? size : m_stage.currentWidget()->surface().size();
    return {m_model.sharedScene(), frame,
            [this, frame, progress] {
                capture({frame, snapshotOverlayScale(frame)}, progress);
                return std::exchange(m_image, {});
            },
            [this](double x, double y, double z) { m_stage.currentWidget()->changeVoxelRotation(x, y, z); }};
}

QImage Pictures::grabWindow()
{
    if (m_model.scene().current() == nullptr || !m_stage.currentWidget()->surface().isReady())
        return {};
    return m_stage.currentWidget()->renderThread().grabNextFrame();
}

void Pictures::copyWindow()
{
    const QImage picture = grabWindow();
    if (picture.isNull())
        return;
    logDebug("putting on clipboard");
    QApplication::clipboard()->setImage(picture);
}

bool Pictures::printWindow(QWidget* parent)
{
    m_image = grabWindow();
    return !m_image.isNull() && printImage(parent);
}

QString Pictures::savePng(const QString& name, int dpi)
{
    return tirn::savePng(std::exchange(m_image, {}), name, dpi);
}

QString Pictures::saveRaw(const QString& name) { return tirn::saveRaw(std::exchange(m_image, {}), name); }

QString Pictures::saveTiff(const QString& name, int dpi)
{
    return tirn::saveTiff(std::exchange(m_image, {}), name, dpi);
}

bool Pictures::printImage(QWidget* parent)
{
    const QImage picture = std::exchange(m_image, {});
    QPrinter printer(QPrinter::HighResolution);
    QPrintDialog dialog(&printer, parent);
    return dialog.exec() == QDialog::Accepted && printPicture(picture, printer);
}

} // namespace tirn
