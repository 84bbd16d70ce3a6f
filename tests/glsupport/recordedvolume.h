#pragma once

#include <gtest/gtest.h>

#include "glsupport/glrecorder.h"
#include "glsupport/renderrig.h"
#include "support/logcapture.h"
#include "support/slicereference.h"

namespace tirn::test {

/// Volumes whose GL calls go to a recorder alone.
class RecordedVolume : public ::testing::Test
{
protected:
    GlRecorder gl{GlRecorder::Mode::StandAlone};
    LogCapture log;

    /// An array of images that is not encoded yet.
    static std::unique_ptr<VoxelArray> prepared(const std::vector<PlainStack>& stacks,
                                                const VolumeOptions& options = {})
    {
        auto array = std::make_unique<VoxelArray>(options);
        for (const PlainStack& stack : stacks)
            array->appendImage(imageOf(stack));
        array->stack() = array->images().front()->attributes();
        array->setChannelCount(stacks.front().channels);
        array->setTimePoints(static_cast<int>(stacks.size()));
        return array;
    }
    static VolumeOptions limited(int limit, RenderThreadKind kind = RenderThreadKind::FragmentProgram)
    {
        return {kind, limit, limit, false, nullptr};
    }
    /// The texels of all calls of one kind, in order.
    std::vector<std::vector<std::uint8_t>> sent(const std::string& name) const
    {
        std::vector<std::vector<std::uint8_t>> all;
        for (const GlCall& call : gl.callsOf(name))
            all.push_back(call.bytes);
        return all;
    }
    static std::vector<std::vector<std::uint8_t>> bytesOf(const std::vector<ReferenceTexture>& textures,
                                                          int bits)
    {
        std::vector<std::vector<std::uint8_t>> all;
        for (const ReferenceTexture& texture : textures)
            all.push_back(texture.bytes(bits));
        return all;
    }
    /// All channels' textures of a stack, one after the other.
    static std::vector<std::vector<std::uint8_t>> slicesOf(const PlainStack& stack, int limit)
    {
        std::vector<std::vector<std::uint8_t>> all;
        for (int channel = 0; channel < stack.channels; ++channel) {
            for (auto& bytes : bytesOf(referenceSlices(stack, channel, limit), stack.bits))
                all.push_back(std::move(bytes));
        }
        return all;
    }
    static std::vector<GLuint> names(const TextureNames& textures)
    {
        std::vector<GLuint> all;
        for (std::size_t i = 0; i < textures.size(); ++i)
            all.push_back(textures[i]);
        return all;
    }
};

} // namespace tirn::test
