#include "ui/main/mainactions.h"

#include <algorithm>
#include <vector>

#include <QLatin1String>

#include "image/filters/filtertable.h"
#include "ui/formlist.h"

namespace tirn {

namespace {

constexpr auto kPlain = ActionRow::Kind::Plain;
constexpr auto kToggle = ActionRow::Kind::Toggle;
constexpr auto kList = ActionRow::Kind::List;
constexpr const char* kNotYet = "Not available in this version.";

constexpr ActionRow separator(const char* menu) { return {menu, "", ""}; }

/// An action whose window is not there yet.
constexpr ActionRow later(const char* menu, const char* name, const char* text)
{
    return {menu, name, text, "", kNotYet, kPlain, false};
}

/// An action on the current stack.
constexpr ActionRow ofStack(const char* menu, const char* name, const char* text, const char* shortcut = "",
                            const char* toolTip = "")
{
    return {menu, name, text, shortcut, toolTip, kPlain, true, ActionRow::Needs::Stack};
}

/// An action of the palette editor; nothing where it was left out.
constexpr ActionRow ofEditor(const char* menu, const char* name, const char* text)
{
#ifdef TIRN_HAS_PLOTS
    return {menu, name, text};
#else
    return later(menu, name, text);
#endif
}

/// An action on the surface that is drawn over it.
constexpr ActionRow ofSurface(const char* menu, const char* name, const char* text,
                              ActionRow::Kind kind = ActionRow::Kind::Plain)
{
    return {menu, name, text, "", "", kind, true, ActionRow::Needs::Surface};
}

constexpr ActionRow kBeforeFilters[] = {
    {"&File/Load", "stackOpenAction", "Stack..."},
    ofEditor("&File/Load", "paletteOpenAction", "Palette..."),
    ofEditor("&File/Load", "paletteNewAction", "New Palette"),
    {"&File/Load", "importStackAction", "Raw Stack..."},
    later("&File/Load", "sessionOpenAction", "Session..."),
    {"&File/Load", "sequenceTiffAction", "Sequence Tiff..."},
    {"&File/Load", "segmentationOpenAction", "Segmentation..."},
    later("&File/Load", "zcurveOpenAction", "Z Correction Curve..."),
    separator("&File/Load"),
    {"&File/Load", "recentStacksMenu", "Recent Stacks", "", "", kList},
    {"&File/Load", "recentPalettesMenu", "Recent Palettes", "", "", kList},
    later("&File/Save", "sessionSaveAction", "Save Session..."),
    ofEditor("&File/Save", "paletteSaveAction", "Save Palette..."),
    ofStack("&File/Close", "closeStackAction", "Stack"),
    ofEditor("&File/Close", "closePaletteAction", "Palette"),
    ofSurface("&File/Close", "closeSegmentationAction", "Segmentation"),
    {"&File/Close", "closeAllAction", "All"},
    ofStack("&File/Export", "fileSaveCoreAction", "Export Core...", "Ctrl+S",
            "Write what is inside the cut box to a file."),
    ofStack("&File/Export", "fileSaveZAction", "Export Z corrected...", "",
            "Write the stack with its depth correction applied to a file."),
    ofStack("&File/Export", "fileSaveAllAction", "All Changes", "",
            "Write what is inside the cut box, with its depth correction applied, to a file."),
    separator("&File"),
    ofStack("&File", "printAction", "Print..."),
    separator("&File"),
    {"&File", "fileExitAction", "E&xit", "Ctrl+Q"},
    {"&Edit", "editUndoAction", "&Undo", "Ctrl+Z", "There is nothing to undo.", kPlain, false},
    {"&Edit", "editRedoAction", "&Redo", "Ctrl+Y", "There is nothing to redo.", kPlain, false},
    ofStack("&Edit", "editCopyAction", "&Copy", "Ctrl+C",
            "Copy the current window contents to the clipboard."),
    separator("&Edit"),
};

constexpr ActionRow kBehindFilters[] = {
    ofStack("&Edit/Flip", "flipXAction", "X Axis"),
    ofStack("&Edit/Flip", "flipYAction", "Y Axis"),
    ofStack("&Edit/Flip", "flipZAction", "Z Axis"),
    ofStack("&Edit", "invertAction", "Invert Intensities"),
    separator("&Edit"),
    ofSurface("&Edit", "showSegmentationAction", "Show Segmentation", kToggle),
    {"&Edit", "stretchToUsedBitsAction", "Stretch to used bits", "",
     "Spread the bits that the data really use over the whole palette.", kToggle},
    {"&Edit", "editPreferencesAction", "Preferences..."},
    ofStack("&View", "fitViewAction", "&Fit", "Home",
            "Put the volume in the middle, as large as the window."),
    ofStack("&View", "resetViewAction", "&Reset View", "Ctrl+Home",
            "Turn, move and scale the volume as it was when it was opened."),
    separator("&View"),
    ofStack("&View", "viewFrontAction", "From the Front", "1"),
    ofStack("&View", "viewBackAction", "From the Back", "2"),
    ofStack("&View", "viewLeftAction", "From the Left", "3"),
    ofStack("&View", "viewRightAction", "From the Right", "4"),
    ofStack("&View", "viewTopAction", "From Above", "5"),
    ofStack("&View", "viewBottomAction", "From Below", "6"),
    separator("&View"),
    {"&View", "rulerAction", "Ruler", "",
     "Click two voxels in the picture to measure between them; Escape ends it.", kToggle, true,
     ActionRow::Needs::Stack},
    {"&Help", "helpContentsAction", "&Contents..."},
    {"&Help", "helpVideo_Card_CapabilitiesAction", "Video Card Capabilities"},
    {"&Help", "helpAboutAction", "&About"},
    {"&Help", "checkForUpdatesAction", "Check for Updates..."},
    {"", "fileOpenAction", "&Open..."},
    {"", "fileSaveAsAction", "Save &As..."},
    {"", "filePrintAction", "&Print..."},
    {"", "editCutAction", "Cu&t"},
    {"", "editPasteAction", "&Paste"},
    {"", "editFindAction", "&Find..."},
    {"", "helpIndexAction", "&Index..."},
};

/// The toggles of the forms in the Window menu.
std::vector<ActionRow> windowActions()
{
    std::vector<FormRow> forms;
    std::copy_if(formRows().begin(), formRows().end(), std::back_inserter(forms),
                 [](const FormRow& row) { return row.place > 0; });
    std::sort(forms.begin(), forms.end(),
              [](const FormRow& a, const FormRow& b) { return a.place < b.place; });
    std::vector<ActionRow> rows;
    for (const FormRow& form : forms)
        rows.push_back({"&Window", form.action, form.menuText, "", "", kToggle});
    return rows;
}

/// An action whose form is not there stands disabled.
void disableMissingForms(std::vector<ActionRow>& rows)
{
    for (ActionRow& row : rows) {
        for (const FormRow& form : formRows()) {
            if (form.make == nullptr && *form.action != '\0' && QLatin1String(row.name) == form.action) {
                row.enabled = false;
                row.toolTip = kNotYet;
            }
        }
    }
}

std::vector<ActionRow> allActions()
{
    std::vector<ActionRow> rows(std::begin(kBeforeFilters), std::end(kBeforeFilters));
    for (const Filter& filter : filters()) {
        if (filter.action != nullptr)
            rows.push_back(ofStack("&Edit/Filter", filter.action, filter.menuText));
    }
    rows.insert(rows.end(), std::begin(kBehindFilters), std::end(kBehindFilters));
    const std::vector<ActionRow> window = windowActions();
    const auto help = std::find_if(rows.begin(), rows.end(),
                                   [](const ActionRow& row) { return QLatin1String(row.menu) == "&Help"; });
    rows.insert(help, window.begin(), window.end());
    disableMissingForms(rows);
    return rows;
}

} // namespace

std::span<const ActionRow> mainActions()
{
    static const std::vector<ActionRow> rows = allActions();
    return rows;
}

} // namespace tirn
