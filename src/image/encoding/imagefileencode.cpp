#include <algorithm>
#include <vector>

#include "base/checkedsize.h"
#include "base/log.h"
#include "image/encoding/texturesink.h"
#include "image/imagefile.h"

namespace tirn {

namespace {

constexpr int kTexture3D = 32879;
constexpr int kTextureRectangle = 34037;
constexpr int kLuminance8 = 32832;
/// Two components a texel: the sample and 0.
constexpr int kHilo16 = 34552;

/// The padded sizes of an image and where the stack lies in it.
struct Padding
{
    int width;
    int height;
    int depth;
    int left;
    int top;
    int front;
};

Padding centred(const ImageFile& stack, bool rectangle)
{
    const ImageAttributes& a = stack.attributes();
    if (rectangle)
        return {a.x, a.y, a.z, 0, 0, 0};
    return {stack.powX(),
            stack.powY(),
            stack.powZ(),
            (stack.powX() - a.x) / 2,
            (stack.powY() - a.y) / 2,
            (stack.powZ() - a.z) / 2};
}

/// A texture image that is filled texel by texel and starts as zeros.
template <class Sample>
class TexelImage
{
public:
    TexelImage(std::int64_t width, std::int64_t height, std::int64_t depth, int components)
        : m_width(width), m_components(components)
    {
        const auto samples = checkedProduct({width, height, depth, components});
        if (!samples)
            throw std::bad_alloc();
        m_samples.resize(static_cast<std::size_t>(*samples));
    }
    void put(std::int64_t column, std::int64_t row, Sample value)
    {
        m_samples[static_cast<std::size_t>((row * m_width + column) * m_components)] = value;
    }
    void clear() { std::fill(m_samples.begin(), m_samples.end(), Sample{0}); }
    const void* data() const { return m_samples.data(); }

private:
    std::int64_t m_width;
    int m_components;
    std::vector<Sample> m_samples;
};

/// Makes the textures of one stack, whole planes at a time, and notes their names.
template <class Sample>
class StackEncoder
{
public:
    StackEncoder(const ImageFile& stack, TextureSink& sink, int target, int internalFormat,
                 std::vector<unsigned>& names)
        : m_stack(stack), m_attributes(stack.attributes()), m_sink(sink), m_names(names),
          m_rectangle(target == kTextureRectangle), m_padless(m_rectangle && !kWords),
          m_format(m_padless ? kLuminance8 : internalFormat),
          m_components(internalFormat == kHilo16 && kWords ? 2 : 1), m_pad(centred(stack, m_padless))
    {}

    void encodeVolumes()
    {
        TexelImage<Sample> image(m_pad.width, m_pad.height, m_pad.depth, m_components);
        for (int channel = 0; channel < m_attributes.channels; ++channel) {
            image.clear();
            for (int z = 0; z < m_attributes.z; ++z) {
                for (int y = 0; y < m_attributes.y; ++y) {
                    for (int x = 0; x < m_attributes.x; ++x)
                        image.put(x + m_pad.left,
                                  std::int64_t{z + m_pad.front} * m_pad.height + row(y + m_pad.top),
                                  at(x, y, z, channel));
                }
            }
            m_names.push_back(
                m_sink.makeTexture3D(m_format, m_pad.width, m_pad.height, m_pad.depth, image.data()));
        }
        // The words' encoder says so, too.
        logDebug("Done encoding 8bit 3D");
    }

    void encodeSlices()
    {
        for (int channel = 0; channel < m_attributes.channels; ++channel) {
            for (int y = 0; y < m_attributes.y; ++y)
                encodeAcrossY(y, channel);
            logDebug("made it though zx");
            for (int x = m_attributes.x - 1; x >= 0; --x)
                encodeAcrossX(x, channel);
            logDebug("made it though yz");
            for (int z = 0; z < m_attributes.z; ++z)
                encodeAcrossZ(z, channel);
            logDebug("made it though xy");
        }
        logDebug(m_padless ? "Done encoding 8bit 2D rectangular" : "Done encoding 8bit 2D");
    }

private:
    static constexpr bool kWords = sizeof(Sample) == 2;

    /// The image's row of a padded y: the card's first row is the bottom one.
    std::int64_t row(int y) const { return m_pad.height - 1 - y; }

    Sample at(int x, int y, int z, int channel) const
    {
        if constexpr (kWords)
            return *m_stack.checkedVoxel16(x, y, z, channel);
        else
            return *m_stack.checkedVoxel8(x, y, z, channel);
    }

    void encodeAcrossY(int y, int channel)
    {
        TexelImage<Sample> image(m_pad.width, m_pad.depth, 1, m_components);
        for (int z = 0; z < m_attributes.z; ++z) {
            for (int x = 0; x < m_attributes.x; ++x)
                image.put(x + m_pad.left, z + m_pad.front, at(x, y, z, channel));
        }
        make(m_pad.width, m_pad.depth, image);
    }

    void encodeAcrossX(int x, int channel)
    {
        TexelImage<Sample> image(m_pad.depth, m_pad.height, 1, m_components);
        // With words the first row counts as outside and the one behind the last as inside: the checked
        // accessor reports that one and gives row 0 of the stack.
        const int first = m_pad.top + (kWords ? 1 : 0);
        for (int y = first; y < std::min(m_pad.height, m_pad.top + m_attributes.y + (kWords ? 1 : 0)); ++y) {
            for (int z = 0; z < m_attributes.z; ++z)
                image.put(z + m_pad.front, row(y), at(x, y - m_pad.top, z, channel));
        }
        make(m_pad.depth, m_pad.height, image);
    }

    void encodeAcrossZ(int z, int channel)
    {
        TexelImage<Sample> image(m_pad.width, m_pad.height, 1, m_components);
        // With words the row behind the last one counts as inside here, too.
        const int end = std::min(m_pad.height, m_pad.top + m_attributes.y + (kWords ? 1 : 0));
        for (int y = m_pad.top; y < end; ++y) {
            for (int x = 0; x < m_attributes.x; ++x)
                image.put(x + m_pad.left, row(y), at(x, y - m_pad.top, z, channel));
        }
        make(m_pad.width, m_pad.height, image);
    }

    void make(int width, int height, const TexelImage<Sample>& image)
    {
        m_names.push_back(m_rectangle ? m_sink.makeTextureRectangle(m_format, width, height, image.data())
                                      : m_sink.makeTexture2D(m_format, width, height, image.data()));
    }

    const ImageFile& m_stack;
    const ImageAttributes& m_attributes;
    TextureSink& m_sink;
    std::vector<unsigned>& m_names;
    bool m_rectangle;
    bool m_padless;
    int m_format;
    int m_components;
    Padding m_pad;
};

template <class Sample>
void encodeStack(const ImageFile& stack, int target, int internalFormat, TextureSink& sink,
                 std::vector<unsigned>& names)
{
    StackEncoder<Sample> encoder(stack, sink, target, internalFormat, names);
    if (target == kTexture3D)
        encoder.encodeVolumes();
    else
        encoder.encodeSlices();
}

} // namespace

std::vector<unsigned> ImageFile::encode(int target, int internalFormat, TextureSink& sink)
{
    if (!m_textureList.empty())
        return m_textureList;
    if (!isLoaded()) {
        logDebug("You forgot to read the file, so I'm reading it now!");
        read();
    }
    const ImageAttributes& a = m_attributes;
    if (!isLoaded() || a.x < 1 || a.y < 1 || a.z < 1 || a.bitDepth < 1) {
        logDebug("Error: BioradFile dimensions not valid or stack not read.");
        return {};
    }
    if (a.bitDepth < 8 || a.bitDepth > 16) {
        logDebug("Error: ImageFile does not know how to encode %d bits.", a.bitDepth);
        return {};
    }
    try {
        if (a.hasWords())
            encodeStack<std::uint16_t>(*this, target, internalFormat, sink, m_textureList);
        else
            encodeStack<std::uint8_t>(*this, target, internalFormat, sink, m_textureList);
    } catch (const std::bad_alloc&) {
        logDebug(target == kTexture3D ? "could not allocate slices for encode"
                                      : "Could not allocate slice for encode");
    }
    return m_textureList;
}

std::vector<unsigned> ImageFile::reEncode(int target, int internalFormat, TextureSink& sink)
{
    m_textureList.clear();
    return encode(target, internalFormat, sink);
}

} // namespace tirn
