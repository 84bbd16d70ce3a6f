#include "depth/zcurve.h"

#include <algorithm>
#include <atomic>
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
    : m_saved(other.m_saved), m_textures(other.m_textures), m_curve(other.m_curve)
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
    m_texture.reset();
    generateTexture();
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
    if (!m_texture || m_texture->texels != texels.size())
        m_texture = std::make_unique<Texture>(m_textures);
    const CurveUpload upload = m_textures->upload(m_texture->name, texels);
    m_texture->name = upload.texture;
    m_texture->texels = texels.size();
    if (upload.error != 0)
        logWarning("GL error: %d", static_cast<int>(upload.error));
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
        const auto texel = static_cast<float>(curve[static_cast<std::size_t>(slice)] / 4);
        texels[static_cast<std::size_t>(k)] = texel > 1.0F ? 1.0F : texel;
    }
    return texels;
}

} // namespace tirn
