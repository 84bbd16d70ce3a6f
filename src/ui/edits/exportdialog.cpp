#include "ui/edits/exportdialog.h"

#include <QFileDialog>
#include <QFileInfo>
#include <QMessageBox>
#include <QPushButton>

#include "base/log.h"
#include "formats/names/filefilters.h"

namespace tirn {

namespace {

constexpr const char* kCaption = "Export stack";
/// More names than these make a box that is too high for the screen.
constexpr int kMostNames = 10;

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
    return name.isEmpty() ? name : withExportEnding(name, chooser.selectedNameFilter());
}

/// What to write where a TIFF would not say the bits of its samples; empty when the user cancelled.
QString nameWithBitCount(const QString& name, QWidget* parent)
{
    QMessageBox box(QMessageBox::Warning, kCaption,
                    QMessageBox::tr("This TIFF will not say how many bits a sample has, so that many "
                                    "programs cannot read it, this one among them.\n"
                                    "A Bio-Rad file keeps all of the stack."),
                    QMessageBox::NoButton, parent);
    QPushButton* pic = box.addButton(QMessageBox::tr("Write a &PIC"), QMessageBox::AcceptRole);
    const QPushButton* tiff = box.addButton(QMessageBox::tr("Write the &TIFF"), QMessageBox::AcceptRole);
    box.addButton(QMessageBox::Cancel);
    box.setDefaultButton(pic);
    box.exec();
    if (box.clickedButton() == pic) {
        const QFileInfo info(name);
        return info.path() + '/' + info.completeBaseName() + ".pic";
    }
    return box.clickedButton() == tiff ? name : QString();
}

/// The names, those beyond the first few as a number.
QString shortened(const QStringList& names)
{
    if (names.size() <= kMostNames)
        return names.join('\n');
    return names.mid(0, kMostNames - 1).join('\n') +
           QMessageBox::tr("\nand %1 more").arg(names.size() - kMostNames + 1);
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
    const QString question = QMessageBox::tr("Overwrite ") + shortened(there) + "?";
    return QMessageBox::question(parent, QMessageBox::tr("Overwrite File"), question,
                                 QMessageBox::Yes | QMessageBox::No, QMessageBox::No) == QMessageBox::Yes;
}

} // namespace

std::optional<ExportJob> askExport(const VoxelArray& array, ExportMode mode, const QString& stackPath,
                                   QWidget* parent)
{
    try {
        QString name = askName(stackPath, parent);
        if (!name.isEmpty() && leavesOutBitCount(name, array.channelCount(), array.bitsPerSample()))
            name = nameWithBitCount(name, parent);
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
