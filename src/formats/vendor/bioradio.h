#pragma once

#include "formats/imageio.h"

namespace tirn {

class OutputFile;

/// Bio-Rad PIC: one file a channel, all little-endian. A 76-byte header, the layers without padding, then a
/// chain of 96-byte notes; the notes AXIS_2 to AXIS_4 carry the voxel size.
class BioradIO : public ImageIO
{
public:
    /// One name a channel.
    BioradIO(ImageFile& owner, const QStringList& names);

    /// True for a file with the signature that is long enough for the layers that its header promises.
    static bool isBiorad(const QString& name);

    ImageAttributes readAttributes() override;
    bool isMyType() override;
    /// Multiplies the owner's dimZ by `step`, again at each read.
    bool readLayers(int first, int last, int step) override;

    /// Takes dimX, dimY and dimZ from the notes AXIS_2, AXIS_3 and AXIS_4.
    static void readNotes(ImageAttributes& attributes);

    /// One file a channel; a single name for several channels is a pattern, to which "_cNN.pic" is added.
    static QStringList write(const QStringList& names, const ImageAttributes& attributes,
                             const std::uint8_t* data, int first, int last, int step, bool overwrite);
    /// The name with the ending of the format, or one for each of several channels.
    static QStringList writtenFiles(const QString& name, int channels);
    static bool writeHead(OutputFile& file, const ImageAttributes& attributes);
    static bool writeBody(OutputFile& file, const std::uint8_t* data, const ImageAttributes& attributes,
                          int first, int last, int step);
    static bool writeNotes(OutputFile& file, const ImageAttributes& attributes);

private:
    bool readHeaders(ImageAttributes& record);
    void readNoteRecords(ImageAttributes& record);
};

} // namespace tirn
