#pragma once

#include "glsupport/glrecorder.h"
#include "support/plainstack.h"
#include "volume/voxelarray.h"

namespace tirn::test {

/// What a volume's textures hold after the recorded calls, in their order: the bytes sent last to each.
inline std::vector<std::vector<std::uint8_t>> textureContents(const GlRecorder& gl, const VoxelArray& array)
{
    std::vector<std::vector<std::uint8_t>> contents(array.textures().size());
    std::size_t bound = contents.size();
    for (const GlCall& call : gl.calls()) {
        if (call.name == "BindTexture") {
            for (bound = 0; bound < contents.size(); ++bound) {
                if (call.number(1) == static_cast<long long>(array.textures()[bound]))
                    break;
            }
        } else if ((call.name.starts_with("TexImage") || call.name.starts_with("TexSubImage")) &&
                   bound < contents.size()) {
            contents[bound] = call.bytes;
        }
    }
    return contents;
}

/// The samples of a stack in memory as plain numbers.
inline PlainStack plainCopy(const ImageFile& image)
{
    const ImageAttributes& a = image.attributes();
    PlainStack copy = PlainStack::blank(a.x, a.y, a.z, a.channels, a.bitDepth);
    for (std::size_t i = 0; i < copy.voxels.size(); ++i)
        copy.voxels[i] = a.hasWords() ? image.stackData16()[i] : image.stackData()[i];
    return copy;
}

} // namespace tirn::test
