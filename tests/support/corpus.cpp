#include "support/corpus.h"

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <map>
#include <sstream>
#include <stdexcept>

#include "support/media_generator.h"

namespace boxlift::test {

namespace fs = std::filesystem;

namespace {

using Row = std::map<std::string, std::string>;

const char* corpusFolder() {
    // Read before any test starts a thread.
    return std::getenv("BOXLIFT_CORPUS"); // NOLINT(concurrency-mt-unsafe)
}

std::vector<std::string> split(const std::string& text, char separator) {
    std::vector<std::string> fields;
    std::istringstream stream(text);
    for (std::string field; std::getline(stream, field, separator);)
        fields.push_back(field);
    return fields;
}

std::vector<Row> readTable(const fs::path& path) {
    std::ifstream stream(path);
    std::string line;
    if (!std::getline(stream, line))
        throw std::runtime_error("BOXLIFT_CORPUS is set, but cannot be read: " + path.string());
    const auto columns = split(line, '\t');
    std::vector<Row> rows;
    while (std::getline(stream, line)) {
        const auto fields = split(line, '\t');
        Row& row = rows.emplace_back();
        for (std::size_t i = 0; i < columns.size() && i < fields.size(); ++i)
            row[columns[i]] = fields[i];
    }
    return rows;
}

std::optional<double> number(const std::string& text) {
    if (text.empty() || text == "-")
        return std::nullopt;
    return std::stod(text);
}

CorpusFile toFile(const fs::path& folder, Row row) {
    CorpusFile file;
    file.name = row["path"];
    file.path = folder / file.name;
    file.format = row["format"];
    file.videoCodec = row["vcodec"];
    file.audioCodec = row["acodec"];
    file.bytes = std::stoll(row["size"]);
    std::sscanf(row["width_height"].c_str(), "%dx%d", &file.width, &file.height);
    file.videoTracks = static_cast<int>(number(row["n_video"]).value_or(0));
    file.audioTracks = static_cast<int>(number(row["n_audio"]).value_or(0));
    file.seconds = number(row["duration"]);
    for (const std::string& tag : split(row["tags"], ','))
        file.tags.insert(tag);
    if (!fs::exists(file.path))
        throw std::runtime_error("the corpus lacks " + file.path.string());
    return file;
}

/// A file that is made where there are no real ones, and what is known of it.
struct Recipe {
    CorpusFile file;
    MediaSpec spec;
};

std::vector<Recipe> recipes() {
    const std::string movie = "mov,mp4,m4a,3gp,3g2,mj2";
    const VideoSpec picture;
    const VideoSpec turned{.rotation = 90};
    const AudioSpec sound;
    return {
        {{.name = "plain.mp4", .format = movie, .videoTracks = 1, .audioTracks = 1},
         {.format = "mp4", .video = {picture}, .audio = {sound}}},
        {{.name = "rotated.mov", .format = movie, .videoTracks = 1, .tags = {"rotated"}},
         {.format = "mov", .video = {turned}}},
        {{.name = "fragmented.mp4", .format = movie, .videoTracks = 1, .tags = {"fragmented"}},
         {.format = "mp4",
          .video = {picture},
          .muxerOptions = {{"movflags", "frag_keyframe+empty_moov"}}}},
        {{.name = "sound.m4a", .format = movie, .audioTracks = 1},
         {.format = "ipod", .audio = {sound}, .cover = CoverSpec{}}},
        {{.name = "stream.ts", .format = "mpegts", .videoTracks = 1, .audioTracks = 1},
         {.format = "mpegts", .video = {picture}, .audio = {sound}}},
        {{.name = "sound.wav", .format = "wav", .audioTracks = 1},
         {.format = "wav", .audio = {{.codec = "pcm_s16le"}}}},
        {{.name = "matroska-renamed.mp4", .format = "matroska,webm", .tags = {"renamed"}},
         {.format = "matroska", .video = {picture}}},
    };
}

std::vector<CorpusFile> generatedFiles(const fs::path& folder) {
    std::cout << "BOXLIFT_CORPUS is not set: generated files stand in for real ones\n";
    std::vector<CorpusFile> files;
    for (Recipe& recipe : recipes()) {
        CorpusFile file = recipe.file;
        file.path = folder / file.name;
        makeMedia(file.path, recipe.spec);
        file.bytes = static_cast<std::int64_t>(fs::file_size(file.path));
        file.seconds = recipe.spec.seconds;
        if (file.videoTracks > 0) {
            file.width = recipe.spec.video.front().width;
            file.height = recipe.spec.video.front().height;
        }
        files.push_back(std::move(file));
    }
    return files;
}

} // namespace

bool hasRealCorpus() {
    return corpusFolder() != nullptr;
}

std::vector<CorpusFile> corpusFiles(const fs::path& folder) {
    if (!hasRealCorpus())
        return generatedFiles(folder);
    const fs::path corpus = corpusFolder();
    std::vector<CorpusFile> files;
    for (Row& row : readTable(corpus / "MANIFEST.tsv"))
        files.push_back(toFile(corpus, std::move(row)));
    if (files.empty())
        throw std::runtime_error("BOXLIFT_CORPUS is set, but lists no files");
    return files;
}

} // namespace boxlift::test
