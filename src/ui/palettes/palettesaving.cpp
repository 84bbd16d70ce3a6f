#include "ui/palettes/palettesaving.h"

#include <QFileDialog>
#include <QFileInfo>

#include "base/log.h"
#include "palettes/palettefile.h"
#include "session/settings.h"
#include "ui/messages.h"

namespace tirn {

namespace {

struct Ending
{
    const char* ending;
    /// What the filter of the dialog says of it.
    const char* filter;
};

constexpr Ending kEndings[] = {{".map", "Tirn Palette"}, {".col", "Amira"}, {".lut", "Andor"}};

QString withEnding(QString name, const QString& filter)
{
    for (const Ending& each : kEndings) {
        if (filter.contains(each.filter) && !name.endsWith(QLatin1String(each.ending), Qt::CaseInsensitive))
            name += each.ending;
    }
    return name;
}

void warnNotWritten(const QString& name, QWidget* parent)
{
    waitForMessage(parent, QMessageBox::Warning, "Save Palette", "Could not write\n" + name);
}

} // namespace

bool savePalette(Palette& palette, Settings& settings, QWidget* parent)
{
    QString name = palette.fullPath();
    if (!name.endsWith(".map") && !name.endsWith(".col"))
        name += ".map";
    if (palette.path().isEmpty() || !QFileInfo::exists(name))
        return savePaletteAs(palette, settings, parent);
    if (!PaletteFile(name).replace(palette)) {
        warnNotWritten(name, parent);
        return false;
    }
    palette.setModified(false);
    return true;
}

bool savePaletteAs(Palette& palette, Settings& settings, QWidget* parent)
{
    const QString start =
        settings.palettePath.isEmpty() ? palette.name() : settings.palettePath + "/" + palette.name();
    QString filter;
    const QString chosen = QFileDialog::getSaveFileName(
        parent, "Save Palette", start, "Tirn Palette (*.map);;Amira (*.col);; Andor IQ (*.lut)", &filter,
        QFileDialog::DontConfirmOverwrite);
    if (chosen.isEmpty())
        return false;
    const QFileInfo target(withEnding(chosen, filter));
    const QString name = target.absoluteFilePath();
    const bool isThere = target.exists();
    if (isThere && !askQuestion(parent, "Overwrite file", "Overwrite " + name, "Yes", "No"))
        return false;
    if (!PaletteFile(name).replace(palette)) {
        if (isThere)
            waitForMessage(parent, QMessageBox::Critical, "Overwrite file error",
                           "Could not overwrite\n" + name);
        else
            warnNotWritten(name, parent);
        return false;
    }
    logDebug("saving palette%s", qPrintable(name));
    palette.setName(target.fileName());
    palette.setPath(target.absolutePath());
    settings.palettePath = target.absolutePath();
    palette.setModified(false);
    return true;
}

} // namespace tirn
