#include "fidelity/report.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <iomanip>
#include <map>
#include <set>
#include <sstream>

#include "fidelity/causes.h"

namespace boxlift::fidelity {

namespace {

/// Shorter clips say little about rates: the encoder's buffer starts nearly full.
constexpr double shortestComparedSeconds = 10;

constexpr std::string_view introduction =
    "# What conversions keep\n\n"
    "Made by `boxlift-fidelity` (see CONTRIBUTING.md); do not edit. Every file of a folder of real "
    "files,\nmany of them odd or damaged on purpose, converted to every target at every size, each "
    "output opened\nagain and compared with its source. \"Copied\" is every sample unchanged; "
    "\"encoded\" is H.264 and AAC.\n\n";

constexpr std::string_view fallbackIntroduction =
    "## Planned as copies, encoded\n\n"
    "The plan looks at the codecs of the first tracks alone. QuickTime files cannot hold AV1, VP8, "
    "VP9, Opus\nand FLAC; none of the three types holds AAC in the framing of broadcasts (LATM); "
    "another track may not fit\neither; a track whose edits show several stretches is put together "
    "by encoding, and so is one without time\nstamps or without its decoder's header.\n\n";

/// A table's cell: what would end it or the table is taken away.
std::string cell(const std::string& text) {
    std::string safe;
    for (const char character : text)
        if (const auto byte = static_cast<unsigned char>(character); byte >= 0x20)
            safe += character == '|' ? std::string("\\|") : std::string(1, character);
    return safe;
}

std::string outcomeWord(const Outcome& outcome) {
    if (outcome.isBlocked)
        return "–";
    if (!outcome.mode)
        return "failed";
    return *outcome.mode == Mode::boxlift ? "copied" : "encoded";
}

std::string plural(std::size_t count, const char* noun) {
    return std::to_string(count) + ' ' + noun + (count == 1 ? "" : "s");
}

class Report {
public:
    Report(std::ostream& out, const std::vector<FileReport>& files) : m_out(out), m_files(files) {
        for (const CauseRow& row : causes())
            m_letters.emplace(row.cause, static_cast<char>('a' + m_letters.size()));
    }

    void write() {
        m_out << introduction;
        writeTotals();
        writeCauses();
        writeUnexplained();
        writeFailures();
        writeSizes();
        writeLikeness();
        writeFiles();
        writeRefused();
    }

private:
    template <typename Visit>
    void forEachOutcome(Visit visit) const {
        for (const FileReport& file : m_files)
            for (const Outcome& outcome : file.outcomes)
                visit(file, outcome);
    }

    void writeTotals() {
        std::map<std::pair<Target, SizeOption>, std::map<std::string, int>> counts;
        forEachOutcome([&](const FileReport&, const Outcome& outcome) {
            auto& row = counts[{outcome.target, outcome.size}];
            ++row[outcomeWord(outcome)];
            const bool fellBack = outcome.mode && outcome.planned != outcome.mode;
            row["fallen back"] += fellBack ? 1 : 0;
            row["whole"] += outcome.mode && outcome.losses.empty() ? 1 : 0;
        });
        const auto refused = std::ranges::count_if(
            m_files, [](const FileReport& file) { return !file.refusal.empty(); });
        m_out
            << "## Totals\n\n"
            << m_files.size() << " files; " << refused << " are no media or none that is opened."
            << "\n\n| target | size | copied | encoded | of these planned as copies | nothing lost "
               "| does not fit | failed |\n|---|---|---|---|---|---|---|---|\n";
        for (auto& [key, row] : counts)
            m_out << "| " << rawValue(key.first) << " | "
                  << (isAudio(key.first) ? "any" : rawValue(key.second)) << " | " << row["copied"]
                  << " | " << row["encoded"] << " | " << row["fallen back"] << " | " << row["whole"]
                  << " | " << row["–"] << " | " << row["failed"] << " |\n";
        m_out << '\n';
    }

    void writeCauses() {
        std::map<std::string, std::set<std::string>> files;
        std::map<std::string, std::set<std::string>> details;
        forEachOutcome([&](const FileReport& file, const Outcome& outcome) {
            for (const Loss& loss : outcome.losses) {
                files[loss.cause].insert(file.name);
                details[loss.cause].insert(loss.detail);
            }
        });
        m_out << "## What is lost, and why\n\n|  | what | files | why |\n|---|---|---|---|\n";
        for (const CauseRow& row : causes())
            m_out << "| " << m_letters.at(std::string(row.cause)) << " | " << row.cause
                  << list(details[std::string(row.cause)]) << " | "
                  << files[std::string(row.cause)].size() << " | " << row.reason << " |\n";
        m_out << '\n';
    }

    static std::string list(const std::set<std::string>& details) {
        constexpr std::size_t shown = 8;
        std::string text;
        std::size_t count = 0;
        for (const std::string& detail : details)
            if (!detail.empty() && count++ < shown)
                text += (text.empty() ? " (" : ", ") + cell(detail);
        if (count > shown)
            text += " and " + std::to_string(count - shown) + " more";
        return text.empty() ? text : text + ')';
    }

    void writeUnexplained() {
        std::set<std::string> lines;
        forEachOutcome([&](const FileReport& file, const Outcome& outcome) {
            for (const Loss& loss : outcome.losses)
                if (!reasonFor(loss.cause))
                    lines.insert(loss.cause + ' ' + cell(loss.detail) + ": " + cell(file.name) +
                                 " to " + std::string(rawValue(outcome.target)) + ", " +
                                 outcomeWord(outcome));
        });
        m_out << "## Unexplained\n\n" << (lines.empty() ? "Nothing.\n" : "");
        for (const std::string& line : lines)
            m_out << "- " << line << '\n';
        m_out << '\n';
    }

    void writeFailures() {
        std::map<std::string, std::map<std::string, std::string>> failures;
        std::map<std::string, std::map<std::string, std::string>> fallbacks;
        forEachOutcome([&](const FileReport& file, const Outcome& outcome) {
            const bool isTold = !outcome.reason.empty() && outcome.reason != outcome.sentence;
            if (!outcome.mode && !outcome.isBlocked)
                failures[outcome.sentence].emplace(file.name, isTold ? outcome.reason : "");
            if (outcome.mode == Mode::reencode && outcome.planned == Mode::boxlift)
                fallbacks[std::string(rawValue(outcome.target)) + ": " + outcome.reason].emplace(
                    file.name, file.contents);
        });
        m_out << "## Failed\n\n";
        writeGroups(failures);
        m_out << fallbackIntroduction;
        writeGroups(fallbacks);
    }

    void writeGroups(const std::map<std::string, std::map<std::string, std::string>>& groups) {
        for (const auto& [sentence, names] : groups) {
            m_out << "- " << cell(sentence) << " (" << plural(names.size(), "file") << ')';
            std::string_view separator = ": ";
            for (const auto& [name, remark] : names) {
                m_out << separator << cell(name)
                      << (remark.empty() ? "" : " (" + cell(remark) + ')');
                separator = ", ";
            }
            m_out << '\n';
        }
        m_out << '\n';
    }

    void writeSizes() {
        m_out
            << "## Size of encodings\n\nOf clips of ten seconds and more with pictures: the "
               "output's size over the source's, to mp4. Below 1 Mbit/s "
               "the source's rate is no bound:\nwhat such a clip takes depends on its content.\n\n"
               "| file | source, KB | source, kbit/s | original | 1080p | 720p "
               "|\n|---|---|---|---|---|---|\n";
        for (const FileReport& file : m_files) {
            if (file.seconds < shortestComparedSeconds)
                continue;
            std::map<SizeOption, std::int64_t> bytes;
            for (const Outcome& outcome : file.outcomes)
                if (outcome.target == Target::mp4 && outcome.mode == Mode::reencode)
                    bytes[outcome.size] = outcome.bytes;
            if (bytes.empty())
                continue;
            m_out << "| " << cell(file.name) << " | " << file.bytes / 1000 << " | "
                  << std::llround(static_cast<double>(file.bytes) * 8 / 1000 / file.seconds);
            for (const SizeOption size : allSizeOptions)
                m_out << " | " << ratio(bytes[size], file.bytes);
            m_out << " |\n";
        }
        m_out << '\n';
    }

    void writeLikeness() {
        constexpr std::size_t shown = 8;
        m_out
            << "## Likeness of encodings\n\nOf plain pictures (progressive, standard range, 8 bits "
               "of 4:2:0, square pixels), encoded to mp4:\nthe mean structural similarity of the "
               "luma to the source's, scaled to the same size. The lowest first.\n\n";
        for (const SizeOption size : allSizeOptions) {
            std::multimap<double, std::string> values;
            forEachOutcome([&](const FileReport& file, const Outcome& outcome) {
                if (outcome.size == size && outcome.likeness)
                    values.emplace(*outcome.likeness, file.name);
            });
            m_out << "- " << rawValue(size) << ", " << plural(values.size(), "clip") << ": ";
            std::size_t count = 0;
            for (const auto& [value, name] : values)
                if (count++ < shown)
                    m_out << (count == 1 ? "" : ", ") << fixed(value, 4) << " (" << cell(name)
                          << ')';
            m_out << '\n';
        }
        m_out << '\n';
    }

    static std::string fixed(double value, int digits) {
        std::ostringstream text;
        text << std::fixed << std::setprecision(digits) << value;
        return text.str();
    }

    static std::string ratio(std::int64_t output, std::int64_t source) {
        if (output == 0 || source == 0)
            return "copied";
        return fixed(static_cast<double>(output) / static_cast<double>(source), 2);
    }

    void writeFiles() {
        m_out << "## Files\n\nAt the original size; the letters are those of what is lost.\n\n"
                 "| file | contents | mp4 | mov | m4a | aac |\n|---|---|---|---|---|---|\n";
        for (const FileReport& file : m_files) {
            if (!file.refusal.empty())
                continue;
            m_out << "| " << cell(file.name) << " | " << file.contents;
            for (const Outcome& outcome : file.outcomes)
                if (outcome.size == SizeOption::original)
                    m_out << " | " << outcomeWord(outcome) << letters(outcome);
            m_out << " |\n";
        }
        m_out << '\n';
    }

    std::string letters(const Outcome& outcome) const {
        std::set<char> found;
        for (const Loss& loss : outcome.losses) {
            const auto letter = m_letters.find(loss.cause);
            found.insert(letter == m_letters.end() ? '?' : letter->second);
        }
        return found.empty() ? "" : ' ' + std::string(found.begin(), found.end());
    }

    void writeRefused() {
        std::map<std::string, std::map<std::string, std::string>> refusals;
        for (const FileReport& file : m_files)
            if (!file.refusal.empty())
                refusals[file.refusal].emplace(file.name, "");
        m_out << "## Refused\n\n";
        writeGroups(refusals);
    }

    std::ostream& m_out;
    const std::vector<FileReport>& m_files;
    std::map<std::string, char> m_letters;
};

} // namespace

void writeReport(std::ostream& out, const std::vector<FileReport>& files) {
    Report(out, files).write();
}

} // namespace boxlift::fidelity
