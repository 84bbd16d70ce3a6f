#include "support/foreigntiff.h"

#include <cstring>

#include <QProcess>
#include <QStandardPaths>

#include "support/picfile.h"

namespace tirn::test {

namespace {

constexpr const char* kScript = R"(
import sys, numpy, tifffile
with tifffile.TiffFile(sys.argv[1]) as tiff:
    first = tiff.pages[0]
    bits = first.bitspersample
    # The planes of an STK stand behind its only page.
    stack = (tiff.series[0].asarray().reshape(-1, *first.shape) if tiff.is_stk
             else numpy.stack([page.asarray() for page in tiff.pages]))
if stack.ndim == 3:
    stack = stack[..., None]
numbers = [*stack.shape, bits]
with open(sys.argv[2], 'wb') as out:
    out.write(numpy.array(numbers, '<i4').tobytes())
    out.write(stack.astype('<i4').tobytes())
)";

/// Debian's interpreter, for which the module is packaged.
QString python() { return QStringLiteral("/usr/bin/python3"); }

int run(const QString& program, const QStringList& arguments, QString* output)
{
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(program, arguments);
    process.waitForFinished(-1);
    if (output != nullptr)
        *output = QString::fromUtf8(process.readAll());
    return process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
}

} // namespace

bool haveForeignTiff()
{
    static const bool have = !QStandardPaths::findExecutable("tiffcp").isEmpty() &&
                             run(python(), {"-c", "import numpy, tifffile"}, nullptr) == 0;
    return have;
}

ForeignTiff readWithTifffile(const QString& name)
{
    const QString numbers = name + ".numbers";
    QString output;
    EXPECT_EQ(run(python(), {"-c", kScript, name, numbers}, &output), 0) << output.toStdString();
    const QByteArray bytes = fileContent(numbers);
    std::vector<std::int32_t> values(static_cast<std::size_t>(bytes.size()) / 4);
    std::memcpy(values.data(), bytes.constData(), values.size() * 4);
    if (values.size() < 5)
        return {};
    return {values[0], values[2], values[1], values[3], values[4], {values.begin() + 5, values.end()}};
}

bool copyWithLibtiff(const QString& name, const QString& target, QString* output)
{
    return run("tiffcp", {"-c", "none", name, target}, output) == 0;
}

bool copyToPlanes(const QString& name, const QString& target)
{
    return run("tiffcp", {"-c", "none", "-p", "separate", name, target}, nullptr) == 0;
}

QString tiffInfo(const QString& name)
{
    QString output;
    EXPECT_EQ(run("tiffinfo", {name}, &output), 0) << output.toStdString();
    return output;
}

} // namespace tirn::test
