#include <algorithm>

#include "support/fuzztargets.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    static const tirn::test::FuzzTarget& target =
        *std::ranges::find_if(tirn::test::fuzzTargets(), [](const tirn::test::FuzzTarget& row) {
            return std::string_view(row.name) == TIRN_FUZZ_TARGET;
        });
    tirn::test::runFuzzTarget(target, bytes, size);
    return 0;
}
