#include <QTemporaryDir>

#include "glsupport/recordedvolume.h"
#include "support/picfile.h"

namespace tirn {
namespace {

using test::denseStack;

/// "stack", "slices first=0 last=1", ... of an element and its children.
QStringList outline(const QDomElement& element)
{
    static const std::map<QString, QStringList> order = {
        {"stack", {"version"}},
        {"slices", {"first", "last", "step", "subsample"}},
        {"encoding", {"type", "conserve"}},
        {"resliced", {"slices"}},
        {"cutplanes", {"xmin", "xmax", "ymin", "ymax", "zmin", "zmax"}},
        {"scale", {"x", "y", "z", "preserve"}},
        {"dimensions", {"x", "y", "z"}},
        {"timepoint", {"label"}},
        {"channel", {"palette", "second", "state"}},
        {"ZCurve", {"saved"}}};
    QString line = element.tagName();
    const auto known = order.find(line);
    const QStringList keys = known != order.end() ? known->second : QStringList{};
    EXPECT_EQ(element.attributes().size(), keys.size()) << qPrintable(line);
    for (const QString& key : keys)
        line += " " + key + "=" + element.attribute(key, "missing");
    QStringList lines = {line};
    for (QDomElement child = element.firstChildElement(); !child.isNull(); child = child.nextSiblingElement())
        lines += outline(child);
    return lines;
}

class StackElement : public test::RecordedVolume
{};

TEST_F(StackElement, HoldsEverythingInItsOrder)
{
    const QTemporaryDir directory;
    const auto array = prepared({denseStack(4, 4, 4, 2)}, limited(4));
    array->encode(GL_TEXTURE_3D, 7);
    array->resetCurves();
    array->cut = {0, 2, 1, 3, 2, 6};
    array->scale = {1, 0.5, 2.25};
    array->preserveScaleRatio = true;
    array->subsample = 2;
    array->stack().dimX = 0.1;
    array->stack().dimY = 0.2;
    array->stack().dimZ = -1;
    array->channels()[0].display = {ChannelState::FlashOn, 3, 1};
    array->channels()[1].display = {ChannelState::Hidden, 0, 2};
    QDomDocument document;
    EXPECT_EQ(outline(array->saveSession(document, directory.filePath("s.tir"))),
              (QStringList{"stack version=2", "slices first=-1 last=-1 step=-1 subsample=2",
                           "encoding type=32879 conserve=0", "resliced slices=7",
                           "cutplanes xmin=0 xmax=2 ymin=1 ymax=3 zmin=2 zmax=6",
                           "scale x=1 y=0.5 z=2.25 preserve=1", "dimensions x=0.1 y=0.2 z=-1",
                           "timepoint label=00:00:00", "file", "channel palette=1 second=3 state=2",
                           "ZCurve saved=0", "channel palette=2 second=0 state=1", "ZCurve saved=0"}));
}

TEST_F(StackElement, NamesFilesRelativeToItsOwn)
{
    const QTemporaryDir directory;
    test::PicFile file;
    VolumeOptions options = limited(4);
    options.conserveMemory = true;
    VoxelArray array(options);
    for (const char* name : {"data/a.pic", "data/b.pic"}) {
        QDir(directory.path()).mkpath("data");
        auto image = std::make_shared<ImageFile>(QStringList{file.save(directory.filePath(name))});
        ASSERT_TRUE(image->read(1, 1, 1));
        array.appendImage(std::move(image));
    }
    array.stack() = array.images().front()->attributes();
    array.setChannelCount(1);
    array.setTimePoints(2);
    array.timeLabels()[1] = "00:00:05";
    QDomDocument document;
    const QDomElement element = array.saveSession(document, directory.filePath("s.tir"));
    const QStringList lines = outline(element);
    EXPECT_EQ(lines[1], "slices first=1 last=1 step=1 subsample=1");
    EXPECT_EQ(lines[2], "encoding type=3553 conserve=1");
    EXPECT_TRUE(lines.filter("resliced").isEmpty());
    EXPECT_TRUE(lines.contains("timepoint label=00:00:05"));
    const QDomElement time = element.firstChildElement("timepoint");
    EXPECT_EQ(time.firstChildElement("file").text(), "data/a.pic");
    EXPECT_EQ(time.nextSiblingElement("timepoint").firstChildElement("file").text(), "data/b.pic");
}

TEST_F(StackElement, WritesTheMultipliersOfACurveLineByLine)
{
    VoxelArray array(2, 2, 3, {});
    array.resetCurves();
    array.channels()[0].zCurve[1] = 1.25;
    array.channels()[0].zCurve[2] = 1.0 / 3;
    QDomDocument document;
    const QDomElement channel = array.saveSession(document, "/tmp/s.tir").firstChildElement("channel");
    EXPECT_EQ(channel.firstChildElement().tagName(), "ZCurve");
    EXPECT_EQ(channel.firstChildElement().text(), "1\n1.25\n0.333333\n");
}

} // namespace
} // namespace tirn
