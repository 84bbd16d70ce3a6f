#pragma once

namespace tirn {

/// How textures and palettes meet on the card. The numbers are part of the program's language.
enum class RenderThreadKind {
    Paletted = 0,        ///< colour index textures and a shared colour table
    Nvidia = 1,          ///< fragment programs, on a card with float buffers
    FragmentProgram = 2, ///< fragment programs, on any other card
    LostCause = 3,       ///< neither: a message only
};

/// True for the kinds that look palettes up in a fragment program.
constexpr bool usesFragmentPrograms(RenderThreadKind kind)
{
    return kind == RenderThreadKind::Nvidia || kind == RenderThreadKind::FragmentProgram;
}

} // namespace tirn
