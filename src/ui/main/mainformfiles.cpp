// What the main window does with files: drops, dialogs, and what is kept when it closes.

#include <QCloseEvent>
#include <QDragEnterEvent>
#include <QFileDialog>
#include <QFileInfo>
#include <QMimeData>
#include <QSettings>
#include <QUrl>

#include "base/log.h"
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
    const DroppedNames dropped = sortDroppedNames(names);
    if (!dropped.session.isEmpty()) {
        Q_EMIT loadSession(dropped.session);
        return;
    }
    for (const QString& palette : dropped.palettes) {
        logDebug("Foo! %s", qPrintable(palette));
        Q_EMIT loadRecentPalette({palette});
    }
    std::vector<QStringList> stacks;
    for (const QString& name : dropped.others)
        stacks.push_back({name});
    m_dropped.ask(std::move(stacks), [this, dropped] { takeDropped(dropped); });
}

void MainForm::takeDropped(const DroppedNames& names)
{
    const DroppedFiles dropped =
        sortDroppedFiles(names, [this](const QString& name) { return m_dropped.known({name}); });
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

std::vector<UnsavedThing> MainForm::unsavedThings()
{
    std::vector<UnsavedThing> things;
    for (const auto& each : m_services.model.scene().palettes) {
        Palette* palette = each.get();
        const auto save = [this, palette] {
            Q_EMIT savePalette(palette);
            // Saving may have failed, or its dialog been left.
            return !palette->isUnsaved();
        };
        if (palette->isUnsaved())
            things.push_back({tr("palette %1").arg(palette->name()), save});
    }
    if (m_unsavedStacks) {
        for (UnsavedThing& stack : m_unsavedStacks())
            things.push_back(std::move(stack));
    }
    return things;
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
    writeChoices(settings, store);
    m_recent.write(store);
    store.sync();
    if (store.status() != QSettings::NoError)
        logWarning("The settings could not be written to %s", qPrintable(store.fileName()));
}

void MainForm::closeEvent(QCloseEvent* event)
{
    const bool mayClose = !m_closeHandler || m_closeHandler();
    if (!mayClose || !askAndSave(unsavedThings(), this)) {
        event->ignore();
        return;
    }
    Q_EMIT closing();
    writeSettings();
    event->accept();
}

} // namespace tirn
