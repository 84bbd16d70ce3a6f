// The palette editor: palettes come, are saved, and go.

#include <algorithm>

#include <QActionGroup>
#include <QCursor>
#include <QDir>
#include <QDragEnterEvent>
#include <QFileDialog>
#include <QFileInfo>
#include <QImage>
#include <QMenu>
#include <QMimeData>
#include <QUrl>

#include "base/log.h"
#include "palettes/palettesession.h"
#include "scene/paletteedits.h"
#include "ui/messages.h"
#include "ui/palettes/paletteform.h"
#include "ui/palettes/palettesaving.h"

namespace tirn {

namespace {

/// Palette files hold 256 or 4096 entries.
constexpr int kShallowDepth = 8;
constexpr int kDeepDepth = 12;

constexpr const char* kLoadFilter =
    "Tirn Palette (*.map);;Amira Palette (*.col);; Andor IQ LUT (*.lut);; Metamorph LUT (*.lut)";

/// The colours of a kind from left to right.
QIcon iconOf(const PaletteKind& kind, const QWidget& widget)
{
    constexpr int side = 16;
    QImage picture(QSize(side, side) * widget.devicePixelRatioF(), QImage::Format_RGB32);
    picture.setDevicePixelRatio(widget.devicePixelRatioF());
    for (int x = 0; x < picture.width(); ++x) {
        const MapColor color = kind.color(x / (picture.width() - 1.0));
        const auto shown = [&](std::size_t k) { return std::clamp(color[k], 0.0, 1.0); };
        const QRgb rgb = QColor::fromRgbF(shown(0), shown(1), shown(2)).rgb();
        for (int y = 0; y < picture.height(); ++y)
            picture.setPixel(x, y, rgb);
    }
    return QPixmap::fromImage(picture);
}

} // namespace

void PaletteForm::buildMenu()
{
    m_menu->setObjectName("paletteMenu");
    m_menu->setToolTipsVisible(true);
    const auto entry = [this](const char* name, const QString& text, auto slot,
                              const QKeySequence& shortcut = {}) {
        QAction* action = m_menu->addAction(text);
        action->setObjectName(name);
        // The main window has some of the same keys: those of the form are found by its own key events.
        action->setShortcutContext(Qt::WidgetShortcut);
        action->setShortcut(shortcut);
        connect(action, &QAction::triggered, this, slot);
    };
    entry("palNew8Action", tr("New 8bit Palette"), [this] { newPalette(); });
    entry(
        "palNewAction", tr("New Palette"), [this] { newPalette12bit(); }, QKeySequence::New);
    entry("palDuplicateAction", tr("Duplicate Palette"), [this] { dupePalette(); });
    entry(
        "palLoadAction", tr("Load Palette..."), [this] { loadPalette(); }, QKeySequence::Open);
    entry(
        "palSaveAction", tr("Save Palette"), [this] { savePalette(); }, QKeySequence::Save);
    entry("palSaveAsAction", tr("Save Palette As..."), [this] { savePaletteAs(); });
    entry("palCloseAction", tr("Close Palette"), [this] { closePalette(); });
    entry("palStacksAction", tr("Manage Stacks"), [this] { services().form(FormId::Manager, true); });
    m_menu->addSeparator();
    entry(
        "palUndoAction", tr("Undo"), [this] { undo(); }, QKeySequence("Ctrl+Z"));
    entry(
        "palRedoAction", tr("Redo"), [this] { redo(); }, QKeySequence("Ctrl+Y"));
    m_menu->addSeparator();
    const std::pair<const char*, PalettePage*> bars[] = {{"Rgb bar", m_pages[0]}, {"hsv bar", m_pages[1]}};
    for (const auto& [text, owner] : bars) {
        QAction* action = m_menu->addAction(tr(text));
        action->setCheckable(true);
        action->setChecked(true);
        connect(action, &QAction::toggled, owner, &PalettePage::setBarShown);
    }
    m_menu->addMenu(buildVisionMenu());
}

QMenu* PaletteForm::buildKindsMenu()
{
    auto* menu = new QMenu(this);
    menu->setObjectName("kindsMenu");
    menu->setToolTipsVisible(true);
    QMenu* group = menu;
    for (const PaletteKind& kind : paletteKinds()) {
        if (*kind.group != '\0' && group->title() != tr(kind.group)) {
            group = menu->addMenu(tr(kind.group));
            group->setToolTipsVisible(true);
        }
        QAction* action = group->addAction(iconOf(kind, *this), tr(kind.name));
        action->setToolTip(kind.note);
        connect(action, &QAction::triggered, this, [this, &kind] { newPaletteOfKind(kind); });
    }
    return menu;
}

QMenu* PaletteForm::buildVisionMenu()
{
    constexpr const char* notes[] = {"The picture as it is.", "As people without red cones see it.",
                                     "As people without green cones see it.",
                                     "As people without blue cones see it."};
    auto* menu = new QMenu(tr("Colour Vision"), this);
    menu->setObjectName("visionMenu");
    menu->setToolTipsVisible(true);
    auto* group = new QActionGroup(menu);
    for (int vision = 0; vision < static_cast<int>(std::size(kColorVisionNames)); ++vision) {
        QAction* action = menu->addAction(tr(kColorVisionNames[vision]));
        action->setToolTip(tr(notes[vision]));
        action->setCheckable(true);
        action->setData(vision);
        group->addAction(action);
        connect(action, &QAction::triggered, this, [this, vision] {
            services().model.editUndoably(tr("colour vision"), 0, Change::Look, [vision](Scene& shown) {
                shown.view.colorVision = static_cast<ColorVision>(vision);
            });
        });
    }
    connect(menu, &QMenu::aboutToShow, menu, [this, menu] {
        for (QAction* action : menu->actions())
            action->setChecked(action->data().toInt() == static_cast<int>(scene().view.colorVision));
    });
    return menu;
}

void PaletteForm::popMenu() { m_menu->popup(QCursor::pos()); }

void PaletteForm::add(std::unique_ptr<Palette> palette)
{
    PaletteList list;
    list.push_back(std::move(palette));
    services().palettes.addPalettes(std::move(list));
    populatePaletteBox();
    changeSelectedPalette(static_cast<int>(scene().palettes.size()) - 1);
    Q_EMIT paletteListChanged();
}

void PaletteForm::addForChannel(std::unique_ptr<Palette> palette)
{
    const int channel = channelOfSelected();
    add(std::move(palette));
    if (channel < 0)
        return;
    services().model.editUndoably(
        tr("palette of a channel"), 0, Change::Channels, [this, channel](Scene& shown) {
            choosePalette(shown.current()->channels()[static_cast<std::size_t>(channel)].display,
                          static_cast<int>(shown.palettes.size()) - 1);
        });
    Q_EMIT paletteAssigned();
}

void PaletteForm::newPalette()
{
    addForChannel(std::make_unique<Palette>("", kShallowDepth, services().palettes.tables()));
}

void PaletteForm::newPalette12bit()
{
    const VoxelArray* array = currentArray();
    const int bits = array != nullptr ? array->stack().realBitDepth() : kDeepDepth;
    const int depth = bits <= kShallowDepth ? kShallowDepth : kDeepDepth;
    logDebug("Creating %dbit palette", depth);
    auto made = std::make_unique<Palette>(QString("%1bit").arg(depth), depth, services().palettes.tables());
    made->setModified(true);
    addForChannel(std::move(made));
}

void PaletteForm::newPaletteOfKind(const PaletteKind& kind)
{
    const Palette* selected = currentPalette();
    const int depth = selected != nullptr && selected->depth() == kDeepDepth ? kDeepDepth : kShallowDepth;
    addForChannel(makePalette(kind, depth, services().palettes.tables()));
}

void PaletteForm::dupePalette()
{
    if (const Palette* palette = currentPalette())
        add(std::make_unique<Palette>(*palette));
}

void PaletteForm::loadPalette()
{
    const Settings& settings = services().settings;
    const QString start = !settings.palettePath.isEmpty() ? settings.palettePath
                          : !settings.stackPath.isEmpty() ? settings.stackPath
                                                          : QDir::currentPath();
    QFileDialog dialog(this, tr("Choose your palette"), start, kLoadFilter);
    dialog.setFileMode(QFileDialog::ExistingFiles);
    if (dialog.exec() == QDialog::Accepted)
        loadPalette(dialog.selectedFiles());
}

void PaletteForm::loadPalette(const QStringList& names)
{
    if (names.isEmpty())
        return;
    services().settings.palettePath = QFileInfo(names.first()).absolutePath();
    QStringList there;
    for (auto name = names.rbegin(); name != names.rend() && QFileInfo::exists(*name); ++name)
        there.append(QDir::toNativeSeparators(QFileInfo(*name).absoluteFilePath()));
    const std::size_t before = scene().palettes.size();
    const QString path = services().settings.palettePath;
    services().loads.loadPalettes(there);
    services().settings.palettePath = path;
    // What could not be read leaves list and selection as they were.
    if (scene().palettes.size() == before)
        return;
    populatePaletteBox();
    changeSelectedPalette(static_cast<int>(scene().palettes.size()) - 1);
    Q_EMIT paletteListChanged();
}

void PaletteForm::loadPalette(const QDomElement& element)
{
    SessionPalette read = readSessionPalette(element, services().palettes.tables());
    if (!read.file.isEmpty())
        loadPalette(QStringList(read.file));
    else if (read.palette != nullptr)
        add(std::move(read.palette));
}

void PaletteForm::savePalette()
{
    Palette* palette = currentPalette();
    if (palette != nullptr && tirn::savePalette(*palette, services().settings, this))
        edit(Change::Palettes, [](Scene&) {});
}

void PaletteForm::savePaletteAs()
{
    Palette* palette = currentPalette();
    if (palette == nullptr || !tirn::savePaletteAs(*palette, services().settings, this))
        return;
    edit(Change::Palettes, [](Scene&) {});
    Q_EMIT paletteListChanged();
}

void PaletteForm::closePalette()
{
    const int index = selectedIndex();
    if (index < 0 || (!scene().arrays.empty() && scene().palettes.size() == 1))
        return;
    if (const auto user = userOfPalette(scene(), index)) {
        showMessage(
            this, QMessageBox::Warning, "Palette in use",
            QString("The palette in use by array number %1. It cannot be closed.").arg(user->array + 1));
        return;
    }
    endStep();
    services().palettes.closePalette(index);
    populatePaletteBox();
    Q_EMIT paletteListChanged();
}

QStringList namesOfText(const QString& text)
{
    QStringList names;
    for (QString line : text.split('\n', Qt::SkipEmptyParts)) {
        if (line.endsWith('\r'))
            line.chop(1);
        const QUrl url(line.trimmed());
        const QString name = url.isLocalFile() ? url.toLocalFile() : line.trimmed();
        if (!name.isEmpty())
            names.append(name);
    }
    return names;
}

void PaletteForm::dragEnterEvent(QDragEnterEvent* event)
{
    if (event->mimeData()->hasText() || event->mimeData()->hasUrls())
        event->acceptProposedAction();
}

void PaletteForm::dropEvent(QDropEvent* event)
{
    QStringList names;
    for (const QUrl& url : event->mimeData()->urls()) {
        if (url.isLocalFile())
            names.append(url.toLocalFile());
    }
    if (names.isEmpty())
        names = namesOfText(event->mimeData()->text());
    event->acceptProposedAction();
    // One at a time: the list has them in the order of the drop.
    for (const QString& name : names)
        loadPalette(QStringList(name));
}

} // namespace tirn
