#include <algorithm>
#include <map>
#include <set>

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QRegularExpression>
#include <QStringList>

#include <gtest/gtest.h>

namespace tirn {
namespace {

/// What the includes of one layer may name besides its own rooms.
struct Layer
{
    QStringList rooms;
    QStringList layersBelow;
};

/// The arrows of the architecture. "main" is the viewer's entry, which lies in no room.
const std::map<QString, Layer>& layers()
{
    static const std::map<QString, Layer> all = {
        {"core",
         {{"base", "image", "formats", "palettes", "depth", "movies", "mesh", "pictures", "raster",
           "session"},
          {}}},
        {"gl", {{"gl", "volume", "scene", "render"}, {"core"}}},
        {"app", {{"threads", "ui", "app"}, {"core", "gl"}}},
        {"cli", {{"cli"}, {"core", "gl"}}},
        {"main", {{"main"}, {"core", "gl", "app"}}},
    };
    return all;
}

/// Arrows within a layer that are not there: the first room knows nothing of the second, which is built on
/// it.
const std::vector<std::pair<QString, QString>> strangers = {{"image", "formats"}, {"scene", "render"},
                                                            {"ui", "app"},        {"ui", "render"},
                                                            {"threads", "app"},   {"threads", "ui"}};

QString layerOf(const QString& room)
{
    for (const auto& [name, layer] : layers()) {
        if (layer.rooms.contains(room))
            return name;
    }
    return {};
}

/// The folder of a form's task; empty for what lies elsewhere.
QString taskOf(const QString& path)
{
    return path.startsWith("ui/") && path.count('/') > 1 ? path.section('/', 1, 1) : QString();
}

QString roomOf(const QString& path) { return path.contains('/') ? path.section('/', 0, 0) : QString("main"); }

/// The files of a tree by their path below src/.
using Tree = std::map<QString, QString>;

class LayerCheck
{
public:
    explicit LayerCheck(std::set<QString> widgetHeaders) : m_widgetHeaders(std::move(widgetHeaders)) {}

    /// One line for each include that points the wrong way: "file: include: why".
    QStringList findings(const Tree& tree) const
    {
        static const QRegularExpression include(R"(^\s*#\s*include\s*([<"])([^>"]+)[>"])",
                                                QRegularExpression::MultilineOption);
        QStringList result;
        for (const auto& [path, text] : tree) {
            auto match = include.globalMatch(text);
            while (match.hasNext()) {
                const QRegularExpressionMatch found = match.next();
                const QString name = found.captured(2);
                const QString complaint =
                    found.captured(1) == "<" ? ofSystem(path, name) : ofOurs(path, name);
                if (!complaint.isEmpty())
                    result << path + ": " + name + ": " + complaint;
            }
        }
        return result;
    }

private:
    QString ofSystem(const QString& path, const QString& name) const
    {
        static const QRegularExpression gl("^(GL|GLES\\d*|EGL|KHR)/|^(Qt\\w+/)?(QOpenGL|QGL|qopengl|qgl)");
        if (layerOf(roomOf(path)) != "core")
            return {};
        if (gl.match(name).hasMatch())
            return "the core knows no GL";
        if (name.startsWith("QtWidgets") || m_widgetHeaders.count(name))
            return "the core knows no widgets";
        return {};
    }

    static QString ofOurs(const QString& path, const QString& name)
    {
        const QString from = layerOf(roomOf(path));
        const QString to = layerOf(roomOf(name));
        // Files that the build makes have no room.
        if (!name.contains('/') && (name.endsWith(".moc") || name.startsWith("ui_")))
            return {};
        if (from.isEmpty() || to.isEmpty() || !name.contains('/'))
            return "not in a known room";
        // What all forms share lies in ui itself and in its widgets.
        const QString task = taskOf(path);
        const QString otherTask = taskOf(name);
        if (!task.isEmpty() && !otherTask.isEmpty() && otherTask != "widgets" && task != otherTask)
            return "a form of " + task + " knows none of " + otherTask;
        const bool isStranger =
            std::count(strangers.begin(), strangers.end(), std::pair(roomOf(path), roomOf(name))) > 0;
        if (isStranger)
            return roomOf(path) + " knows nothing of " + roomOf(name);
        if (from != to && !layers().at(from).layersBelow.contains(to))
            return "points up from " + from + " to " + to;
        return {};
    }

    std::set<QString> m_widgetHeaders;
};

QStringList findings(const QString& path, const QString& line)
{
    return LayerCheck({"QWidget", "qwidget.h"}).findings({{path, line + "\nint x;\n"}});
}

bool isFound(const QString& path, const QString& include)
{
    return !findings(path, "#include " + include).isEmpty();
}

TEST(Layers, ArrowsPointDownIsFine)
{
    EXPECT_FALSE(isFound("image/imagefile.h", "\"base/log.h\""));
    EXPECT_FALSE(isFound("base/log.h", "\"session/paths.h\""));
    EXPECT_FALSE(isFound("render/camera.cpp", "\"image/imagefile.h\""));
    EXPECT_FALSE(isFound("ui/mainform.cpp", "\"scene/scenemodel.h\""));
    EXPECT_FALSE(isFound("app/menus.cpp", "\"render/tirnwidget.h\""));
    EXPECT_FALSE(isFound("cli/tirntool.cpp", "\"render/camera.h\""));
    EXPECT_FALSE(isFound("main.cpp", "\"app/tirnapplication.h\""));
    EXPECT_FALSE(isFound("ui/mainform.cpp", "\"ui_mainform.h\""));
    EXPECT_FALSE(isFound("ui/mainform.cpp", "\"mainform.moc\""));
}

TEST(Layers, ArrowsThatPointUpAreFound)
{
    EXPECT_EQ(findings("image/imagefile.cpp", "#include \"gl/glcalls.h\""),
              QStringList{"image/imagefile.cpp: gl/glcalls.h: points up from core to gl"});
    EXPECT_TRUE(isFound("palettes/palette.h", "\"ui/paletteform.h\""));
    EXPECT_TRUE(isFound("render/tirnwidget.cpp", "\"ui/mainform.h\""));
    EXPECT_TRUE(isFound("volume/voxelarray.cpp", "\"threads/filethread.h\""));
    EXPECT_TRUE(isFound("cli/tirntool.cpp", "\"threads/filethread.h\""));
    EXPECT_TRUE(isFound("ui/mainform.cpp", "\"cli/tirntool.h\""));
    EXPECT_TRUE(isFound("base/log.cpp", "\"cli/tirntool.h\""));
}

TEST(Layers, StacksKnowNoFormat)
{
    EXPECT_EQ(findings("image/imagefile.cpp", "#include \"formats/imageio.h\""),
              QStringList{"image/imagefile.cpp: formats/imageio.h: image knows nothing of formats"});
    EXPECT_TRUE(isFound("image/filters/mean.cpp", "\"formats/common/imageio.h\""));
    EXPECT_FALSE(isFound("formats/imageio.cpp", "\"image/imagefile.h\""));
}

TEST(Layers, IncludesAreFoundHoweverTheyAreWritten)
{
    EXPECT_EQ(findings("base/log.cpp", "  #  include\"app/events.h\"").size(), 1);
    EXPECT_EQ(
        findings("base/log.cpp", "#include \"base/log.h\"\n#include \"ui/a.h\"\n#include \"ui/b.h\"").size(),
        2);
}

TEST(Layers, WaysRoundTheRoomsAreFound)
{
    EXPECT_TRUE(isFound("base/log.cpp", "\"../app/events.h\""));
    EXPECT_TRUE(isFound("base/log.cpp", "\"events.h\""));
    EXPECT_TRUE(isFound("base/log.cpp", "\"cellar/events.h\""));
    EXPECT_TRUE(isFound("cellar/events.cpp", "\"base/log.h\""));
}

TEST(Layers, TheCoreKnowsNeitherWidgetsNorGl)
{
    EXPECT_TRUE(isFound("formats/tiff.cpp", "<QWidget>"));
    EXPECT_TRUE(isFound("formats/tiff.cpp", "<qwidget.h>"));
    EXPECT_TRUE(isFound("formats/tiff.cpp", "<QtWidgets/QWidget>"));
    EXPECT_TRUE(isFound("palettes/palette.cpp", "<GL/gl.h>"));
    EXPECT_TRUE(isFound("palettes/palette.cpp", "<EGL/egl.h>"));
    EXPECT_TRUE(isFound("palettes/palette.cpp", "<QOpenGLContext>"));
    EXPECT_TRUE(isFound("palettes/palette.cpp", "<QtGui/qopengl.h>"));
    EXPECT_FALSE(isFound("palettes/palette.cpp", "<QColor>"));
    EXPECT_FALSE(isFound("render/tirnwidget.h", "<QWidget>"));
    EXPECT_FALSE(isFound("gl/glcalls.h", "<GL/gl.h>"));
}

TEST(Layers, OnlyTheTopKnowsTheApplicationObject)
{
    EXPECT_FALSE(isFound("app/menus.cpp", "\"app/tirnapplication.h\""));
    EXPECT_FALSE(isFound("main.cpp", "\"app/tirnapplication.h\""));
    EXPECT_TRUE(isFound("ui/viewform.cpp", "\"app/tirnapplication.h\""));
    EXPECT_TRUE(isFound("threads/filethread.cpp", "\"app/tirnapplication.h\""));
    EXPECT_TRUE(isFound("threads/filethread.cpp", "\"app/events.h\""));
    EXPECT_TRUE(isFound("threads/filethread.cpp", "\"ui/messages.h\""));
    EXPECT_TRUE(isFound("render/glthread.cpp", "\"app/tirnapplication.h\""));
}

TEST(Layers, FormsKnowTheModelAndNotHowItIsDrawn)
{
    EXPECT_EQ(findings("ui/view/viewform.cpp", "#include \"render/glthread.h\""),
              QStringList{"ui/view/viewform.cpp: render/glthread.h: ui knows nothing of render"});
    EXPECT_TRUE(isFound("scene/scene.cpp", "\"render/glthread.h\""));
    EXPECT_FALSE(isFound("render/glthread.cpp", "\"scene/scene.h\""));
}

TEST(Layers, FormsOfOneTaskKnowNoneOfAnother)
{
    EXPECT_EQ(
        findings("ui/view/viewform.cpp", "#include \"ui/open/stackopenform.h\""),
        QStringList{"ui/view/viewform.cpp: ui/open/stackopenform.h: a form of view knows none of open"});
    EXPECT_FALSE(isFound("ui/view/viewform.cpp", "\"ui/view/cutplanesform.h\""));
    EXPECT_FALSE(isFound("ui/view/viewform.cpp", "\"ui/toolform.h\""));
    EXPECT_FALSE(isFound("ui/view/viewform.cpp", "\"ui/widgets/floatspinbox.h\""));
    EXPECT_FALSE(isFound("ui/formlist.cpp", "\"ui/view/viewform.h\""));
}

std::set<QString> widgetHeaders()
{
    const QStringList names = QDir(TIRN_WIDGETS_HEADERS).entryList(QDir::Files);
    return {names.begin(), names.end()};
}

Tree sources()
{
    const QDir root(TIRN_SOURCE_DIR "/src");
    Tree tree;
    QDirIterator files(root.path(), {"*.cpp", "*.h"}, QDir::Files, QDirIterator::Subdirectories);
    while (files.hasNext()) {
        QFile file(files.next());
        EXPECT_TRUE(file.open(QIODevice::ReadOnly));
        tree[root.relativeFilePath(file.fileName())] = QString::fromUtf8(file.readAll());
    }
    return tree;
}

TEST(Layers, TheSourcesKeepToTheArrows)
{
    const std::set<QString> widgets = widgetHeaders();
    ASSERT_TRUE(widgets.count("QWidget"));
    const Tree tree = sources();
    ASSERT_TRUE(tree.count("base/log.cpp"));
    EXPECT_EQ(LayerCheck(widgets).findings(tree).join('\n').toStdString(), "");
}

TEST(Layers, NoFileIsLongerThanSixHundredLines)
{
    for (const auto& [path, text] : sources())
        EXPECT_LE(text.count('\n'), 600) << path.toStdString();
}

TEST(Layers, NoFolderIsTooFullToBeOverlooked)
{
    std::map<QString, int> files;
    for (const auto& [path, text] : sources())
        ++files[path.section('/', 0, -2)];
    for (const auto& [folder, count] : files)
        EXPECT_LE(count, 32) << folder.toStdString();
}

} // namespace
} // namespace tirn
