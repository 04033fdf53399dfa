#pragma once

#include <ostream>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "support/corpus.h"

namespace boxlift::test {

/// A small file that is whole.
struct Seed {
    std::string name{};
    std::string bytes{};
};

/// A kind of file that is read; the last one is of files that must be refused.
struct SeedKind {
    const char* name;
    /// How many mutants are tried in a run of the tests: by how much there is to go wrong, and how
    /// long one takes.
    int mutants;
    /// The contents of some; less where this computer lacks an encoder.
    std::vector<std::string> (*make)();
    /// The demuxer of real ones; of them only those that `includes`, unless it is null.
    std::string_view demuxer;
    bool (*includes)(const CorpusFile& file);

    /// What the list of tests shows.
    friend void PrintTo(const SeedKind& kind, std::ostream* out) { *out << kind.name; }
};

std::span<const SeedKind> seedKinds();

/// Made ones and, where BOXLIFT_CORPUS is set, the smallest real ones.
std::vector<Seed> seedsOf(const SeedKind& kind);

} // namespace boxlift::test
