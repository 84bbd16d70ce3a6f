#include "support/slicereference.h"

namespace tirn::test {

namespace {

/// One padded axis.
struct PaddedAxis
{
    int padded = 1;
    int block = 1;
    int padding = 0;

    PaddedAxis(int size, int limit)
    {
        while (padded < size)
            padded *= 2;
        block = padded > limit ? limit : padded;
        padding = (padded - size) / 2;
    }
};

struct Padded
{
    const PlainStack& stack;
    int channel;
    PaddedAxis x;
    PaddedAxis y;
    PaddedAxis z;

    Padded(const PlainStack& of, int channelAt, int limit)
        : stack(of), channel(channelAt), x(of.x, limit), y(of.y, limit), z(of.z, limit)
    {}
    /// Data coordinates; zero outside.
    std::uint16_t at(int atX, int atY, int atZ) const
    {
        const bool inside =
            atX >= 0 && atX < stack.x && atY >= 0 && atY < stack.y && atZ >= 0 && atZ < stack.z;
        return inside ? stack.at(atX, atY, atZ, channel) : std::uint16_t{0};
    }
};

} // namespace

std::vector<std::uint8_t> ReferenceTexture::bytes(int bits) const
{
    std::vector<std::uint8_t> all;
    for (const std::uint16_t texel : texels) {
        all.push_back(static_cast<std::uint8_t>(texel & 0xFF));
        if (bits > 8)
            all.push_back(static_cast<std::uint8_t>(texel >> 8));
    }
    return all;
}

std::vector<ReferenceTexture> slicesAcrossY(const PlainStack& stack, int channel, int limit)
{
    const Padded p(stack, channel, limit);
    std::vector<ReferenceTexture> textures;
    for (int y = 0; y < stack.y; ++y) {
        for (int zEnd = p.z.padded; zEnd > 0; zEnd -= p.z.block) {
            for (int xStart = 0; xStart < p.x.padded; xStart += p.x.block) {
                ReferenceTexture texture{p.x.block, p.z.block, 1, {}};
                for (int z = zEnd - p.z.block; z < zEnd; ++z) {
                    for (int x = xStart; x < xStart + p.x.block; ++x)
                        texture.texels.push_back(p.at(x - p.x.padding, y, z - p.z.padding));
                }
                textures.push_back(texture);
            }
        }
    }
    return textures;
}

std::vector<ReferenceTexture> slicesAcrossX(const PlainStack& stack, int channel, int limit)
{
    const Padded p(stack, channel, limit);
    std::vector<ReferenceTexture> textures;
    for (int x = stack.x - 1; x >= 0; --x) {
        for (int yEnd = p.y.padded; yEnd > 0; yEnd -= p.y.block) {
            for (int zEnd = p.z.padded; zEnd > 0; zEnd -= p.z.block) {
                ReferenceTexture texture{p.z.block, p.y.block, 1, {}};
                for (int y = yEnd - 1; y >= yEnd - p.y.block; --y) {
                    for (int z = zEnd - p.z.block; z < zEnd; ++z)
                        texture.texels.push_back(p.at(x, y - p.y.padding, z - p.z.padding));
                }
                textures.push_back(texture);
            }
        }
    }
    return textures;
}

std::vector<ReferenceTexture> slicesAcrossZ(const PlainStack& stack, int channel, int limit)
{
    const Padded p(stack, channel, limit);
    std::vector<ReferenceTexture> textures;
    for (int z = 0; z < stack.z; ++z) {
        for (int yEnd = p.y.padded; yEnd > 0; yEnd -= p.y.block) {
            for (int xStart = 0; xStart < p.x.padded; xStart += p.x.block) {
                ReferenceTexture texture{p.x.block, p.y.block, 1, {}};
                for (int y = yEnd - 1; y >= yEnd - p.y.block; --y) {
                    for (int x = xStart; x < xStart + p.x.block; ++x)
                        texture.texels.push_back(p.at(x - p.x.padding, y - p.y.padding, z));
                }
                textures.push_back(texture);
            }
        }
    }
    return textures;
}

std::vector<ReferenceTexture> referenceSlices(const PlainStack& stack, int channel, int limit)
{
    std::vector<ReferenceTexture> all = slicesAcrossY(stack, channel, limit);
    for (const auto& more : {slicesAcrossX(stack, channel, limit), slicesAcrossZ(stack, channel, limit)})
        all.insert(all.end(), more.begin(), more.end());
    return all;
}

std::vector<ReferenceTexture> referenceBlocks(const PlainStack& stack, int channel, int limit)
{
    const Padded p(stack, channel, limit);
    std::vector<ReferenceTexture> textures;
    for (int zStart = 0; zStart < p.z.padded; zStart += p.z.block) {
        for (int yStart = 0; yStart < p.y.padded; yStart += p.y.block) {
            for (int xStart = 0; xStart < p.x.padded; xStart += p.x.block) {
                ReferenceTexture texture{p.x.block, p.y.block, p.z.block, {}};
                for (int z = zStart; z < zStart + p.z.block; ++z) {
                    for (int y = yStart + p.y.block - 1; y >= yStart; --y) {
                        for (int x = xStart; x < xStart + p.x.block; ++x)
                            texture.texels.push_back(p.at(x - p.x.padding, y - p.y.padding, z - p.z.padding));
                    }
                }
                textures.push_back(texture);
            }
        }
    }
    return textures;
}

} // namespace tirn::test
