#include <QDir>
#include <QProcess>
#include <QStandardPaths>

#include <gtest/gtest.h>

#include "palettes/palettefile.h"
#include "support/picfile.h"

namespace tirn {
namespace {

QStringList samplePalettes() { return QDir(TIRN_SOURCE_DIR "/samples").entryList({"*.map"}); }

TEST(SamplePalettes, ReadAndStartClearAndBlack)
{
    ASSERT_FALSE(samplePalettes().isEmpty());
    for (const QString& name : samplePalettes()) {
        PaletteFile file(TIRN_SOURCE_DIR "/samples/" + name);
        ASSERT_TRUE(file.read()) << name.toStdString();
        EXPECT_EQ(file.entries().front(), (PaletteEntry{0, 0, 0, 0}));
        const auto byAlpha = [](const PaletteEntry& a, const PaletteEntry& b) { return a.alpha < b.alpha; };
        EXPECT_TRUE(std::is_sorted(file.entries().begin(), file.entries().end(), byAlpha));
    }
}

TEST(SamplePalettes, AreWhatTheirScriptMakes)
{
    const QString python = QStandardPaths::findExecutable("python3");
    ASSERT_FALSE(python.isEmpty()) << "python3 is not installed";
    const QTemporaryDir folder;
    ASSERT_EQ(QProcess::execute(python, {TIRN_SOURCE_DIR "/tools/make-palettes", folder.path()}), 0);
    EXPECT_EQ(QDir(folder.path()).entryList({"*.map"}), samplePalettes());
    for (const QString& name : samplePalettes()) {
        EXPECT_EQ(test::fileContent(folder.filePath(name)),
                  test::fileContent(TIRN_SOURCE_DIR "/samples/" + name))
            << name.toStdString();
    }
}

} // namespace
} // namespace tirn
