#pragma once

#include <cstddef>
#include <memory>
#include <span>
#include <vector>

#include "depth/curveformulas.h"
#include "depth/curvetextures.h"

namespace tirn {

/// A channel's depth correction: one multiplier a slice, 1.0 leaving it unchanged, and its 1D texture, which
/// is cut into as many as the volume has blocks along z.
///
/// The array is shared on purpose: whoever takes `curve()` writes into the curve itself, and so does a copy
/// of the curve. The texture is not: it has one owner, which releases it, and a copy makes its own. Whatever
/// touches the texture needs the card's context current, where there is a card.
class ZCurve
{
public:
    using Array = std::shared_ptr<std::vector<double>>;

    /// `textures` may be null (no card); otherwise it must outlive the curve and its copies.
    explicit ZCurve(CurveTextures* textures = nullptr);
    explicit ZCurve(int slices, CurveTextures* textures = nullptr);
    explicit ZCurve(Array array, CurveTextures* textures = nullptr);
    /// Shares the array; has no texture yet.
    ZCurve(const ZCurve& other);
    ZCurve(ZCurve&&) noexcept = default;
    /// Shares the array, keeps a texture and blocks of its own and brings them up to date.
    ZCurve& operator=(const ZCurve& other);
    ~ZCurve() = default;

    bool saved() const { return m_saved; }
    int size() const { return static_cast<int>(m_curve->size()); }
    const Array& curve() const { return m_curve; }
    /// The name of a block's texture, 0 while there is none.
    unsigned textureName(int block = 0) const;
    /// Cuts the texture for a volume of so many blocks along z.
    void setBlocks(int blocks);

    /// A plain curve of another length with a new texture.
    void setDepth(int slices);
    /// Makes every multiplier 1.0; the texture stays.
    void reset();
    /// The multiplier of slice z, which must be there.
    double& operator[](int z) { return (*m_curve)[static_cast<std::size_t>(z)]; }
    double operator[](int z) const { return (*m_curve)[static_cast<std::size_t>(z)]; }

    /// Fill the curve by a formula; the texture stays.
    void powerCurve(const CurveParameters& parameters) { tirn::powerCurve(*m_curve, parameters); }
    void linearCurve(double offset, int maximum) { tirn::linearCurve(*m_curve, offset, maximum); }

    /// Makes the texture agree with the curve.
    void generateTexture();

private:
    struct Texture
    {
        Texture(CurveTextures* sink, std::size_t length) : textures(sink), texels(length) {}
        ~Texture();
        Texture(const Texture&) = delete;
        Texture& operator=(const Texture&) = delete;

        CurveTextures* textures;
        unsigned name = 0;
        std::size_t texels;
    };

    bool m_saved = false;
    CurveTextures* m_textures;
    int m_blocks = 1;
    std::vector<std::unique_ptr<Texture>> m_pieces;
    Array m_curve;
};

/// The texels of a curve's texture: the multipliers divided by four and cut to at most 1.0, in the middle of
/// the next power of two, the ends repeated on both sides. What is no number counts as 1. Empty for an empty
/// curve.
std::vector<float> curveTexels(std::span<const double> curve);

} // namespace tirn
