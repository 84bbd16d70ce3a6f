#include "cli/voxelwriter.h"

#include <algorithm>
#include <bit>
#include <functional>

#include "base/outputfile.h"
#include "cli/activity.h"
#include "cli/console.h"
#include "cli/resultfiles.h"
#include "cli/toolerror.h"
#include "image/imagefile.h"

namespace tirn {

namespace {

constexpr std::int64_t kPiece = std::int64_t{16} << 20;

/// In pieces, so that Ctrl-C is heard. False when a piece could not be written.
bool writePieces(const std::uint8_t* bytes, std::int64_t count,
                 const std::function<bool(const void*, std::int64_t)>& write)
{
    Activity activity(QStringLiteral("Writing"));
    const auto pieces = static_cast<int>((count + kPiece - 1) / kPiece);
    for (int piece = 0; piece < pieces; ++piece) {
        const std::int64_t start = piece * kPiece;
        if (!write(bytes + start, std::min(kPiece, count - start)))
            return false;
        activity.setSteps(piece + 1, pieces);
        Console::checkInterrupt();
    }
    return true;
}

} // namespace

void writeVoxels(ImageFile& stack, const QString& out, bool overwrite)
{
    static_assert(std::endian::native == std::endian::little, "the buffer is written as it lies");
    const std::int64_t bytes = stack.sampleCount() * stack.attributes().bytesPerSample();
    if (out == QLatin1String("-")) {
        if (!writePieces(stack.stackData(), bytes, Console::answerBytes))
            throw FileError("stdout", QStringLiteral("could not be written"));
        return;
    }
    checkReplaceable(out, overwrite);
    OutputFile file(out);
    if (!file.open())
        throw FileError(out, QStringLiteral("Unable to open file for writing"));
    const auto write = [&file](const void* from, std::int64_t count) { return file.write(from, count); };
    if (!writePieces(stack.stackData(), bytes, write) || !file.commit())
        throw FileError(out, QStringLiteral("could not be written whole"));
}

} // namespace tirn
