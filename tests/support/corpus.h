#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace boxlift::test {

/// A real media file and what a prober once said of it. The prober's word is a hint: where it
/// disagrees with the file, the file is right.
struct CorpusFile {
    /// The path below the corpus' folder; what tests call the file.
    std::string name{};
    std::filesystem::path path{};
    /// FFmpeg's name of the demuxer; "-" when no demuxer took the file.
    std::string format{};
    std::string videoCodec{};
    std::string audioCodec{};
    std::int64_t bytes = 0;
    /// As stored; 0 where unknown.
    int width = 0;
    int height = 0;
    /// Without cover pictures.
    int videoTracks = 0;
    int audioTracks = 0;
    std::optional<double> seconds{};
    /// Such as "rotated" or "fragmented".
    std::set<std::string> tags{};
};

/// The files of the folder that the environment variable BOXLIFT_CORPUS names, in the order of its
/// MANIFEST.tsv. Unset: a handful of generated ones, made in `folder`, and standard output says so.
/// Throws std::runtime_error when it is set and there is no manifest or a file of it is missing.
std::vector<CorpusFile> corpusFiles(const std::filesystem::path& folder);

/// Whether BOXLIFT_CORPUS is set.
bool hasRealCorpus();

} // namespace boxlift::test
