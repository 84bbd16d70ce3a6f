// Inputs that fuzzing found or starts from, run once more.

#include <QDir>

#include <gtest/gtest.h>

#include "support/fuzztargets.h"
#include "support/picfile.h"

namespace tirn {
namespace {

class FuzzReplay : public testing::TestWithParam<std::size_t>
{};

TEST_P(FuzzReplay, DoesNoHarm)
{
    const test::FuzzTarget& target = test::fuzzTargets()[GetParam()];
    const auto run = [&target](const QByteArray& bytes) {
        test::runFuzzTarget(target, reinterpret_cast<const std::uint8_t*>(bytes.constData()),
                            static_cast<std::size_t>(bytes.size()));
    };
    const QDir folder(test::testData(QString("fuzz/") + target.name));
    for (const QString& name : folder.entryList(QDir::Files))
        run(test::fileContent(folder.filePath(name)));
    for (const QByteArray& bytes :
         {QByteArray(), QByteArray("II*\0", 4), QByteArray("MM\0*", 4), QByteArray(2000, '\0'),
          QByteArray(2000, '\xff'), QByteArray(2000, '7'), QByteArray(300, '\n')})
        run(bytes);
}

INSTANTIATE_TEST_SUITE_P(All, FuzzReplay, testing::Range(std::size_t{0}, test::fuzzTargets().size()),
                         [](const auto& parameter) { return test::fuzzTargets()[parameter.param].name; });

} // namespace
} // namespace tirn
