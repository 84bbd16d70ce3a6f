#include "ui/edits/exportdialog.h"

#include <QFileDialog>
#include <QFileInfo>

#include "base/log.h"
#include "formats/imageformats.h"
#include "formats/names/filefilters.h"
#include "ui/messages.h"

namespace tirn {

namespace {

constexpr const char* kCaption = "Export stack";
/// More names than these make a box that is too high for the screen.
constexpr int kMostNames = 10;

/// With the ending of the format that was chosen. Where the name has that of another one it is asked which
/// of them counts; empty when the user cancelled.
QString withFormat(const QString& name, const QString& filter, QWidget* parent)
{
    const ImageFormat* named = exportFormatOfEnding(name);
    const ImageFormat& chosen = exportFormatOfFilter(filter);
    if (named == nullptr)
        return name + chosen.endingList().first();
    if (named == &chosen)
        return name;
    const QString question = QObject::tr("The name ends like a %1 file, but %2 was chosen.\n%3")
                                 .arg(named->filterName, chosen.filterName, name);
    const auto button = [](const ImageFormat& format) {
        return QObject::tr("Write %1").arg(format.filterName);
    };
    switch (askWithCancel(parent, QObject::tr(kCaption), question, button(*named), button(chosen))) {
    case Answer::Yes:
        return name;
    case Answer::No:
        return withOtherEnding(name, *named, chosen);
    case Answer::Cancel:
        break;
    }
    return {};
}

/// The name with its ending; empty when the user cancelled.
QString askName(const QString& stackPath, QWidget* parent)
{
    QFileDialog chooser(parent, QFileDialog::tr(kCaption), stackPath, exportFileFilter());
    chooser.setAcceptMode(QFileDialog::AcceptSave);
    chooser.setFileMode(QFileDialog::AnyFile);
    // The question comes later, for all files together.
    chooser.setOption(QFileDialog::DontConfirmOverwrite);
    if (chooser.exec() != QDialog::Accepted)
        return {};
    const QString name = chooser.selectedFiles().value(0);
    return name.isEmpty() ? name : withFormat(name, chooser.selectedNameFilter(), parent);
}

/// The names, those beyond the first few as a number.
QString shortened(const QStringList& names)
{
    if (names.size() <= kMostNames)
        return names.join('\n');
    return names.mid(0, kMostNames - 1).join('\n') +
           QObject::tr("\nand %1 more").arg(names.size() - kMostNames + 1);
}

bool mayOverwrite(const std::vector<QStringList>& files, QWidget* parent)
{
    QStringList there;
    for (const QStringList& names : files) {
        for (const QString& name : names) {
            if (QFileInfo::exists(name))
                there.append(name);
        }
    }
    if (there.isEmpty())
        return true;
    return askQuestion(parent, QObject::tr("Overwrite File"),
                       QObject::tr("Overwrite ") + shortened(there) + "?", QObject::tr("&Yes"),
                       QObject::tr("&No"));
}

} // namespace

std::optional<ExportJob> askExport(const VoxelArray& array, ExportMode mode, const QString& stackPath,
                                   QWidget* parent)
{
    try {
        const QString name = askName(stackPath, parent);
        if (name.isEmpty())
            return {};
        ExportJob job = exportJob(array, mode, name);
        const auto files = exportFileNames(name, static_cast<int>(job.timePoints.size()), job.channels());
        return mayOverwrite(files, parent) ? std::optional(std::move(job)) : std::nullopt;
    } catch (const std::bad_alloc&) {
        logWarning("Could not allocate memory for the save dialog");
        return {};
    }
}

} // namespace tirn
