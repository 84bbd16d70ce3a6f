#include "uisupport/loadrig.h"

#include "support/tifffile.h"

namespace tirn::test {

LoadReport ReportList::collector()
{
    LoadReport report;
    report.progress = [this](const QString& message, int value, int total, bool done) {
        const QString text =
            QStringLiteral("%1 %2/%3%4").arg(message).arg(value).arg(total).arg(done ? " done" : "");
        {
            const std::scoped_lock lock(m_mutex);
            (total == -1 ? m_continuations : m_steps).append(text);
        }
        if (onReport)
            onReport(text);
    };
    return report;
}

QStringList ReportList::steps() const
{
    const std::scoped_lock lock(m_mutex);
    return m_steps;
}

QStringList ReportList::continuations() const
{
    const std::scoped_lock lock(m_mutex);
    return m_continuations;
}

void ReportList::clear()
{
    const std::scoped_lock lock(m_mutex);
    m_steps.clear();
    m_continuations.clear();
}

std::optional<LoadedStack> LoadRig::load()
{
    const LoadReport report = reports.collector();
    return StackLoading(std::move(description), surroundings, report, cancelled).run();
}

QString LoadRig::pic(const QString& name, int x, int y, int z, int bits) const
{
    PicFile file;
    file.x = x;
    file.y = y;
    file.z = z;
    file.bits = bits;
    return file.save(path(name));
}

QStringList LoadRig::tiffs(const QString& name, int layers, int value, int x) const
{
    QStringList names;
    for (int k = 0; k < layers; ++k) {
        TiffFile file;
        file.pages = {plainPage(x, 5, value + k)};
        names.append(file.save(path(QStringLiteral("%1_z%2.tif").arg(name).arg(k))));
    }
    return names;
}

void LoadRig::describePics(int count)
{
    for (int i = 0; i < count; ++i)
        description.filesToLoad.push_back({pic(QStringLiteral("t%1.pic").arg(i))});
    description.fileType = ImageType::BioRad;
    description.timePoints = count;
}

} // namespace tirn::test
