#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <iterator>

#include <gtest/gtest.h>

#include "fuzz/exercise.h"
#include "fuzz/mutant.h"
#include "fuzz/seeds.h"
#include "fuzz/trials.h"
#include "support/temp_folder.h"

namespace boxlift::test {

namespace fs = std::filesystem;

namespace {

/// BOXLIFT_MUTANTS multiplies what is tried of each kind.
int factor() {
    const char* text = std::getenv("BOXLIFT_MUTANTS");
    return text ? std::atoi(text) : 1;
}

enum Outcome { refused, opened, copied };

/// Of those that open every tenth is transcoded as well.
constexpr int transcodedShare = 10;

} // namespace

/// Some hundreds of damaged files of a kind, the same ones each time. Each is opened and analysed,
/// those that can be are copied: none may crash, hang or take much memory.
class Mutants : public testing::TestWithParam<SeedKind> {
protected:
    const Seed& seedOf(int number) const {
        return m_seeds[static_cast<std::size_t>(number) % m_seeds.size()];
    }
    Mutant mutant(int number) const {
        return mutate(seedOf(number).bytes, static_cast<std::uint32_t>(number));
    }

    int tryMutant(int number) const {
        const std::string bytes = mutant(number).bytes;
        const auto info = analyzeBytes(bytes);
        if (!info)
            return refused;
        const auto turn = static_cast<std::size_t>(number) / m_seeds.size();
        if (info->hasAudio && turn % transcodedShare == 0)
            transcodeBytes(bytes);
        const bool removesAudio = info->hasVideo && turn % 4 == 0;
        return copyBytes(bytes, typeFor(turn), removesAudio) ? copied : opened;
    }

    /// Leaves the file where it can be tried again.
    void report(const Finding& finding) const {
        const Mutant culprit = mutant(finding.number);
        const fs::path path =
            fs::current_path() / "mutants" / (GetParam().name + std::to_string(finding.number));
        writeFile(path, culprit.bytes);
        ADD_FAILURE() << "mutant " << finding.number << " of " << seedOf(finding.number).name
                      << " (" << culprit.damage << ") " << finding.what << "; it is in " << path
                      << "\n"
                      << finding.said;
    }

    const std::vector<Seed> m_seeds = seedsOf(GetParam());
    const int m_count = GetParam().mutants * factor();
};

TEST_P(Mutants, AreRefusedOrConvertedInBounds) {
    if (m_seeds.empty())
        GTEST_SKIP() << "there is no encoder for any";
    const Trials trials = runTrials(m_count, [this](int number) { return tryMutant(number); });
    for (const Finding& finding : trials.findings)
        report(finding);
    const auto count = [&](Outcome outcome) {
        return std::ranges::count(trials.outcomes, outcome);
    };
    std::cout << m_count << " mutants of " << m_seeds.size() << " files: " << count(refused)
              << " refused, " << count(opened) << " opened, " << count(copied)
              << " copied; the slowest took " << trials.slowest.count() << " ms, growth "
              << trials.growth / 1024 << " KiB\n";
    EXPECT_EQ(count(refused) + count(opened) + count(copied) + std::ssize(trials.findings),
              m_count);
    // Else the damage is such that nothing was tried but the first look.
    const bool mayOpen = GetParam().name != std::string_view("Foreign");
    EXPECT_GE(count(opened) + count(copied), mayOpen ? m_count / 10 : 0);
}

INSTANTIATE_TEST_SUITE_P(Of, Mutants, testing::ValuesIn(seedKinds().begin(), seedKinds().end()),
                         [](const auto& info) { return std::string(info.param.name); });

} // namespace boxlift::test
