#include "ui/formlist.h"

#include <algorithm>

#include "ui/main/aboutform.h"
#include "ui/open/importstackform.h"
#include "ui/open/sequencetiffform.h"
#include "ui/open/stackopenform.h"
#ifdef TIRN_HAS_PLOTS
#include "ui/palettes/paletteform.h"
#endif
#include "ui/preferences/preferencesform.h"
#include "ui/stacks/managerform.h"
#include "ui/view/analyzethisform.h"
#include "ui/view/cutplanesform.h"
#include "ui/view/lightingform.h"
#include "ui/view/rendererform.h"
#include "ui/view/viewform.h"

namespace tirn {

namespace {

template <class Form>
ToolForm* make(const FormServices& services, QWidget* parent)
{
    return new Form(services, parent);
}

#ifdef TIRN_HAS_PLOTS
constexpr auto makePaletteForm = make<PaletteForm>;
#else
constexpr ToolForm* (*makePaletteForm)(const FormServices&, QWidget*) = nullptr;
#endif

// Several names are those of another form, and stay as they are.
constexpr FormRow kForms[] = {
    {.id = FormId::Palette,
     .name = "Palette Editor",
     .failureName = "Palette",
     .action = "windowPalette_EditorAction",
     .place = 2,
     .menuText = "Palette Editor",
     .contextText = "Palettes",
     .session = "paletteform",
     .make = makePaletteForm},
    {.id = FormId::Stack,
     .name = "StackOpen",
     .failureName = "Stack Open",
     .kind = FormKind::Dialog,
     .make = make<StackOpenForm>},
    {.id = FormId::About,
     .name = "About",
     .failureName = "About",
     .kind = FormKind::Dialog,
     .action = "helpAboutAction",
     .make = make<AboutForm>},
    {.id = FormId::AnalyzeThis,
     .name = "Analyze",
     .failureName = "Analyze This",
     .kind = FormKind::Dialog,
     .action = "helpVideo_Card_CapabilitiesAction",
     .contextText = "Video card capabilities",
     .make = make<AnalyzeThisForm>},
    {.id = FormId::CorrectionMatrix,
     .name = "Matrix",
     .failureName = "Correction Matrix",
     .action = "windowCorrectionMatrixAction",
     .place = 12,
     .menuText = "Channel Unmixing",
     .session = "correctionmatrixform"},
    {.id = FormId::CutPlanes,
     .name = "Cut",
     .failureName = "Cut Planes",
     .action = "windowCut_PlanesAction",
     .place = 8,
     .menuText = "Cut Planes",
     .contextText = "Cut Planes",
     .session = "cutplanesform",
     .make = make<CutPlanesForm>},
    {.id = FormId::ImportStack,
     .name = "Import",
     .failureName = "Import Stack",
     .kind = FormKind::Dialog,
     .action = "importStackAction",
     .make = make<ImportStackForm>},
    {.id = FormId::Manager,
     .name = "Manager",
     .failureName = "Manager",
     .action = "windowStack_ManagerAction",
     .place = 1,
     .menuText = "Stack Manager",
     .contextText = "Manage Stacks",
     .session = "managerform",
     .make = make<ManagerForm>},
    {.id = FormId::Merge,
     .name = "Merge",
     .failureName = "Merge",
     .action = "windowMergerAction",
     .place = 10,
     .menuText = "Merger",
     .session = "mergeform"},
    {.id = FormId::MovieMaker,
     .name = "Movie",
     .failureName = "Movie Maker",
     .action = "windowMovie_MakerAction",
     .place = 5,
     .menuText = "Movie Maker",
     .contextText = "Make Movie",
     .session = "moviemakerform"},
    {.id = FormId::MovieMaker2,
     .name = "Movie2",
     .failureName = "Advanced Movie Maker",
     .action = "windowAdvancedMovieMakerAction",
     .place = 6,
     .menuText = "Advanced Movie Maker",
     .session = "moviemaker2form"},
    {.id = FormId::Preferences,
     .name = "Preferences",
     .failureName = "Preferences",
     .kind = FormKind::Dialog,
     .action = "editPreferencesAction",
     .make = make<PreferencesForm>},
    {.id = FormId::Renderer,
     .name = "Render Options",
     .failureName = "Renderer",
     .action = "windowRendering_OptionsAction",
     .place = 3,
     .menuText = "Renderer",
     .contextText = "Render Options",
     .session = "rendererform",
     .make = make<RendererForm>},
    {.id = FormId::Sadistics,
     .name = "Statistics",
     .failureName = "Statistics",
     .action = "windowStatisticsAction",
     .place = 14,
     .menuText = "Statistics",
     .session = "statisticsform"},
    {.id = FormId::SequenceTiff,
     .name = "Sequence Tiff",
     .failureName = "Sequence Tiff",
     .kind = FormKind::Dialog,
     .make = make<SequenceTiffForm>},
    {.id = FormId::ShaderTricks,
     .name = "Shader Tricks",
     .failureName = "Shader Tricks",
     .action = "windowShaderTricksAction",
     .place = 13,
     .menuText = "Shader Tricks"},
    {.id = FormId::SnapShot,
     .name = "Render Options",
     .failureName = "Snapshot",
     .action = "windowSnapshotAction",
     .place = 4,
     .menuText = "Snapshot",
     .contextText = "Take Snapshot",
     .session = "snapshotform"},
    {.id = FormId::View,
     .name = "View",
     .failureName = "View",
     .action = "windowViewAction",
     .place = 7,
     .menuText = "View",
     .contextText = "View",
     .session = "viewform",
     .make = make<ViewForm>},
    {.id = FormId::ZScale,
     .name = "ZScale",
     .failureName = "ZScale",
     .action = "windowZScaleAction",
     .place = 9,
     .menuText = "Z Intensity Correction",
     .session = "zscaleform"},
    {.id = FormId::Lighting,
     .name = "Import",
     .failureName = "Lighting",
     .action = "windowLightingAction",
     .place = 15,
     .menuText = "Lighting",
     .make = make<LightingForm>},
    {.id = FormId::MaskEditor,
     .name = "MaskEdit",
     .failureName = "About",
     .action = "windowMaskEditorAction",
     .place = 11,
     .menuText = "Mask of Zero",
     .session = "maskeditorform"},
    {.id = FormId::ShaderEditor, .name = "Shader Editor", .failureName = "Shader Editor"},
};

} // namespace

std::span<const FormRow> formRows() { return kForms; }

const FormRow& formRow(FormId id)
{
    return *std::find_if(std::begin(kForms), std::end(kForms),
                         [id](const FormRow& row) { return row.id == id; });
}

} // namespace tirn
