#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include <QFile>
#include <QFileInfo>
#include <QStringList>

#include "base/voxelbuffer.h"
#include "image/imageattributes.h"
#include "image/stackreader.h"

namespace tirn {

class ImageFile;

/// What a file format does for the stack that owns it: knows its files, reads their attributes and layers.
///
/// A concrete class's constructor reads the attributes and gives them to the owner. Failures append one text
/// to the owner's `errorList`; only running out of memory throws (std::bad_alloc). No lock: one thread uses a
/// stack and its reader at a time.
class ImageIO : public StackReader
{
public:
    /// Opens nothing.
    ImageIO(ImageFile& owner, const QStringList& names);

    /// The attributes that the files state; type 11 when they are not of this format.
    virtual ImageAttributes readAttributes();
    virtual bool isMyType();
    virtual QStringList filterNames(const QStringList& names);
    bool readLayers(int first, int last, int step) override;
    virtual bool readAll();
    bool readLayer(int layer) { return readLayers(layer, layer, 1); }

    QStringList fileNames() const override;
    QStringList filePaths() const override;
    int fileCount() const { return static_cast<int>(m_files.size()); }

    static bool exists(const QString& name);
    /// The first format of the table whose probe accepts the file.
    static ImageType probeType(const QString& name);

    /// destination[i * channels + c] = channel c's sample i, for x * y * z samples: bytes at depth 8, words
    /// at any other depth up to 16, nothing above.
    static void mergeChannels(std::span<const std::byte* const> channelBuffers, void* destination,
                              const ImageAttributes& attributes);
    /// The reverse, at depth 8 and 16 only: any other depth does nothing.
    static void separateChannels(const void* source, std::span<std::byte* const> channelBuffers,
                                 const ImageAttributes& attributes);
    /// Reverses the bytes of each of `count` elements of `size` bytes.
    static void swapEndian(void* buffer, std::int64_t count, int size);

protected:
    ImageFile& owner() { return m_owner; }
    const ImageFile& owner() const { return m_owner; }
    /// The owner's attributes, to read and to change.
    ImageAttributes& attributes();
    QFile& file(int index) { return *m_files[static_cast<std::size_t>(index)]; }
    const QFileInfo& info(int index) const { return m_infos[static_cast<std::size_t>(index)]; }

    /// Puts other files in place of those of the constructor.
    void setFiles(const QStringList& names);
    /// Appends to the owner's `errorList`; the result is false, for a reader to return.
    bool fail(const QString& text);
    /// Fails with the text for the owner's depth, which no stack can have.
    bool failForDepth();
    /// Fails with the text for files that hold only so many of the layers asked for.
    bool failForEarlyEnd(std::int64_t completeLayers, int layers);
    /// Gives up the voxels of the last read, so that old and new are never in memory together; the sizes are
    /// those of a stack without voxels until setStack.
    void releaseStack();
    void setStack(VoxelBuffer voxels, int x, int y, int z);
    /// The log lines of mergeChannels, for a reader that merges while it reads.
    static void logMerging(int bitDepth);
    static void logMerged(double seconds);
    void setLayerRange(int first, int last, int step);
    /// setLayerRange for a format in which a step stretches the voxels: multiplies the owner's dimZ.
    void setSteppedRange(int first, int last, int step);

private:
    std::vector<std::unique_ptr<QFile>> m_files;
    std::vector<QFileInfo> m_infos;
    ImageFile& m_owner;
};

} // namespace tirn
