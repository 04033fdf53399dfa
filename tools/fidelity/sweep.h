#pragma once

#include <filesystem>
#include <vector>

#include "fidelity/outcome.h"
#include "support/corpus.h"

namespace boxlift::fidelity {

/// Converts every file to every target that it can take, in `scratch`, several at a time. Says on
/// standard error how far it has come.
std::vector<FileReport> sweep(const std::vector<test::CorpusFile>& files,
                              const std::filesystem::path& scratch);

} // namespace boxlift::fidelity
