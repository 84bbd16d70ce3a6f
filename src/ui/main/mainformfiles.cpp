// What the main window does with files: drops, dialogs, and what is kept when it closes.

#include <QCloseEvent>
#include <QDragEnterEvent>
#include <QFileDialog>
#include <QFileInfo>
#include <QMessageBox>
#include <QMimeData>
#include <QPushButton>
#include <QSettings>
#include <QUrl>

#include "base/log.h"
#include "image/imagefile.h"
#include "session/droppedfiles.h"
#include "ui/main/mainform.h"

namespace tirn {

namespace {

QStringList localFiles(const QMimeData* data)
{
    QStringList names;
    for (const QUrl& url : data->urls()) {
        if (url.isLocalFile())
            names.append(url.toLocalFile());
    }
    return names;
}

ImageAttributes probeStack(const QString& name)
{
    const ImageFile image(QStringList{name});
    return image.hasReader() ? image.attributes() : ImageAttributes();
}

enum class Answer { Yes, No, Cancel };

Answer askToSave(const QString& name, QWidget* parent)
{
    QMessageBox box(QMessageBox::Question, MainForm::tr("Unsaved Palettes"),
                    MainForm::tr("Do you want to save the changes to ") + name + "?", QMessageBox::NoButton,
                    parent);
    box.setTextFormat(Qt::PlainText);
    const QAbstractButton* yes = box.addButton(MainForm::tr("Yes"), QMessageBox::YesRole);
    const QAbstractButton* no = box.addButton(MainForm::tr("No"), QMessageBox::NoRole);
    box.setEscapeButton(box.addButton(MainForm::tr("Cancel"), QMessageBox::RejectRole));
    box.exec();
    if (box.clickedButton() == yes)
        return Answer::Yes;
    return box.clickedButton() == no ? Answer::No : Answer::Cancel;
}

} // namespace

void MainForm::dragEnterEvent(QDragEnterEvent* event)
{
    if (!localFiles(event->mimeData()).isEmpty())
        event->acceptProposedAction();
}

void MainForm::dropEvent(QDropEvent* event)
{
    const QStringList names = localFiles(event->mimeData());
    if (names.isEmpty())
        return;
    event->acceptProposedAction();
    const DroppedFiles dropped = sortDroppedFiles(names, probeStack);
    if (!dropped.session.isEmpty()) {
        Q_EMIT loadSession(dropped.session);
        return;
    }
    for (const QString& palette : dropped.palettes) {
        logDebug("Foo! %s", qPrintable(palette));
        Q_EMIT loadRecentPalette({palette});
    }
    if (!dropped.sequence.isEmpty())
        Q_EMIT loadTiffs(dropped.sequence, 0);
    else if (!dropped.files.empty())
        Q_EMIT loadRecentStack(dropped.files, dropped.channels, dropped.timePoints);
    else if (!dropped.unknown.isEmpty())
        showNote(tr("None of what was dropped is a stack or a palette."));
}

void MainForm::loadSequenceTiff()
{
    const QString name = QFileDialog::getOpenFileName(
        this, tr("Load Sequence Tiff"), m_services.settings.stackPath, "Tiff (*.tif *.tiff);; All Files (*)");
    if (!name.trimmed().isEmpty() && QFileInfo::exists(name))
        Q_EMIT loadTiffs(name, 0);
}

bool MainForm::askAboutUnsavedPalettes()
{
    for (const auto& palette : m_services.model.scene().palettes) {
        if (palette->hasFile())
            continue;
        const Answer answer = askToSave(palette->name(), this);
        if (answer == Answer::Cancel)
            return false;
        if (answer == Answer::No)
            continue;
        Q_EMIT savePalette(palette.get());
        // Saving may have failed, or its dialog been left: nothing is lost then.
        if (!palette->hasFile())
            return false;
    }
    return true;
}

void MainForm::writeSettings()
{
    QSettings& store = m_services.store;
    const Settings& settings = m_services.settings;
    store.beginGroup("Paths");
    if (!settings.stackPath.isEmpty())
        store.setValue("StackPath", settings.stackPath);
    if (!settings.palettePath.isEmpty())
        store.setValue("PalettePath", settings.palettePath);
    store.endGroup();
    m_recent.write(store);
    store.sync();
    if (store.status() != QSettings::NoError)
        logWarning("The settings could not be written to %s", qPrintable(store.fileName()));
}

void MainForm::closeEvent(QCloseEvent* event)
{
    const bool mayClose = !m_closeHandler || m_closeHandler();
    if (!mayClose || !askAboutUnsavedPalettes()) {
        event->ignore();
        return;
    }
    Q_EMIT closing();
    writeSettings();
    event->accept();
}

} // namespace tirn
