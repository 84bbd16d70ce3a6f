#include "depth/zcurve.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <new>

#include "base/checkedsize.h"
#include "base/log.h"

namespace tirn {

ZCurve::Texture::~Texture()
{
    if (name != 0)
        textures->release(name);
}

ZCurve::ZCurve(CurveTextures* textures) : ZCurve(0, textures) {}

ZCurve::ZCurve(int slices, CurveTextures* textures)
    : m_textures(textures),
      m_curve(std::make_shared<std::vector<double>>(static_cast<std::size_t>(std::max(slices, 0)), 1.0))
{}

ZCurve::ZCurve(Array array, CurveTextures* textures)
    : m_textures(textures), m_curve(array ? std::move(array) : std::make_shared<std::vector<double>>())
{}

ZCurve::ZCurve(const ZCurve& other)
    : m_saved(other.m_saved), m_textures(other.m_textures), m_blocks(other.m_blocks), m_curve(other.m_curve)
{}

ZCurve& ZCurve::operator=(const ZCurve& other)
{
    if (this != &other) {
        m_saved = other.m_saved;
        m_curve = other.m_curve;
        if (m_textures == nullptr)
            m_textures = other.m_textures;
    }
    generateTexture();
    return *this;
}

void ZCurve::setDepth(int slices)
{
    m_curve->assign(static_cast<std::size_t>(std::max(slices, 0)), 1.0);
    m_pieces.clear();
    generateTexture();
}

void ZCurve::setBlocks(int blocks)
{
    if (m_blocks == std::max(1, blocks))
        return;
    m_blocks = std::max(1, blocks);
    if (!m_pieces.empty())
        generateTexture();
}

unsigned ZCurve::textureName(int block) const
{
    return block >= 0 && block < std::ssize(m_pieces) ? m_pieces[static_cast<std::size_t>(block)]->name : 0;
}

void ZCurve::reset() { std::fill(m_curve->begin(), m_curve->end(), 1.0); }

void ZCurve::generateTexture()
{
    if (m_curve->empty())
        return;
    // Asks for the opposite of what it means, so it reports each ordinary curve; one line a run will do.
    static std::atomic_flag reported;
    if (!reported.test_and_set())
        logAssertion("curve.isNull()", "zcurve", 83);

    std::vector<float> texels;
    try {
        texels = curveTexels(*m_curve);
    } catch (const std::bad_alloc&) {
        logWarning("Could not allocate memory to generate texture");
        return;
    }
    if (m_textures == nullptr)
        return;
    const std::size_t blocks = std::min(static_cast<std::size_t>(m_blocks), texels.size());
    const std::size_t length = texels.size() / blocks;
    if (m_pieces.size() != blocks || m_pieces.front()->texels != length) {
        m_pieces.clear();
        for (std::size_t block = 0; block < blocks; ++block)
            m_pieces.push_back(std::make_unique<Texture>(m_textures, length));
    }
    for (std::size_t block = 0; block < blocks; ++block) {
        const CurveUpload upload =
            m_textures->upload(m_pieces[block]->name, std::span(texels).subspan(block * length, length));
        m_pieces[block]->name = upload.texture;
        if (upload.error != 0)
            logWarning("GL error: %d", static_cast<int>(upload.error));
    }
}

std::vector<float> curveTexels(std::span<const double> curve)
{
    const auto slices = static_cast<int>(curve.size());
    if (slices == 0)
        return {};
    const int length = next2(slices);
    const int pad = (length - slices) / 2 - (length - slices) % 2;
    std::vector<float> texels(static_cast<std::size_t>(length));
    for (int k = 0; k < length; ++k) {
        // In front of the slices stands the multiplier of slice `pad`, not that of the first one. Behind the
        // last slice one more would be wanted: the last is repeated.
        const int slice = k < pad ? pad : std::min(k - pad, slices - 1);
        const double multiplier = curve[static_cast<std::size_t>(slice)];
        const auto texel = static_cast<float>(std::isnan(multiplier) ? 0.25 : multiplier / 4);
        texels[static_cast<std::size_t>(k)] = texel > 1.0F ? 1.0F : texel;
    }
    return texels;
}

} // namespace tirn
