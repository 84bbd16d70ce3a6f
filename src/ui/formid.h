#pragma once

namespace tirn {

/// The tool forms. A form that is not written yet has an id already, since menus and sessions name it.
enum class FormId {
    Palette,
    Stack,
    About,
    AnalyzeThis,
    CorrectionMatrix,
    CutPlanes,
    ImportStack,
    Manager,
    Merge,
    MovieMaker,
    MovieMaker2,
    Preferences,
    Renderer,
    Sadistics,
    SequenceTiff,
    ShaderTricks,
    SnapShot,
    View,
    ZScale,
    Lighting,
    MaskEditor,
    ShaderEditor,
};

} // namespace tirn
