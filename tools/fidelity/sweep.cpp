#include "fidelity/sweep.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <iostream>
#include <mutex>
#include <thread>

#include "engine/converter.h"
#include "engine/media/error.h"
#include "fidelity/losses.h"
#include "model/cancelled.h"
#include "model/job_rules.h"
#include "support/media_likeness.h"
#include "support/media_probe.h"

namespace boxlift::fidelity {

namespace {

/// Longer than any healthy file of a corpus of short clips needs, on a busy machine too.
constexpr std::chrono::minutes limit{15};
/// What one conversion leaves idle another one uses.
constexpr std::size_t workers = 2;

/// Asks for a stop when the time is up.
class Deadline {
public:
    std::stop_token token() const { return m_stop.get_token(); }

private:
    void wait(const std::stop_token& done) {
        std::mutex mutex;
        std::condition_variable_any never;
        std::unique_lock lock(mutex);
        never.wait_for(lock, done, limit, [] { return false; });
        if (!done.stop_requested())
            m_stop.request_stop();
    }

    std::stop_source m_stop;
    std::jthread m_thread{[this](const std::stop_token& done) { wait(done); }};
};

std::string contentsOf(const test::ProbedFile& file) {
    std::string text;
    for (const auto kind : {test::StreamKind::video, test::StreamKind::audio})
        for (const test::ProbedStream* stream : file.all(kind))
            text += (text.empty() ? "" : " + ") + stream->codec;
    return text;
}

/// The technical cause, without the path and what a library said at last.
std::string reasonOf(const std::exception& error) {
    const auto* found = dynamic_cast<const media::Error*>(&error);
    if (!found)
        return error.what();
    std::string text = found->technical();
    if (const auto start = text.find("): "); start != std::string::npos)
        text.erase(0, start + 3);
    return text.substr(0, text.find("; last message"));
}

class FileSweep {
public:
    FileSweep(const test::CorpusFile& file, std::filesystem::path output)
        : m_file(file), m_output(std::move(output)) {}

    FileReport run() {
        m_report.name = m_file.name;
        m_report.bytes = m_file.bytes;
        try {
            m_info = Converter::analyze(m_file.path);
            m_source = test::probe(m_file.path);
        } catch (const std::exception& error) {
            m_report.refusal = error.what();
            return m_report;
        }
        m_report.contents = contentsOf(m_source);
        m_report.seconds = m_info.duration;
        for (const Target target : allTargets)
            for (const SizeOption size : allSizeOptions)
                if (!isAudio(target) || size == SizeOption::original)
                    convert(target, size);
        return m_report;
    }

private:
    void convert(Target target, SizeOption size) {
        Outcome outcome;
        outcome.target = target;
        outcome.size = size;
        if (const auto reason = blocker(m_info, target)) {
            outcome.sentence = *reason;
            outcome.isBlocked = true;
        } else {
            outcome.planned = Converter::plan(m_info, target, size, false).mode;
            tryConversion(outcome);
        }
        m_report.outcomes.push_back(std::move(outcome));
    }

    void tryConversion(Outcome& outcome) {
        const Deadline deadline;
        try {
            outcome.mode = Converter::convert(
                m_file.path, m_info, outcome.target, outcome.size, false, m_output, [](double) {},
                deadline.token());
            outcome.bytes = static_cast<std::int64_t>(std::filesystem::file_size(m_output));
            measure(outcome);
            outcome.losses = lossesBetween(m_source, test::probe(m_output), outcome);
        } catch (const Cancelled&) {
            outcome.sentence = "It took more than a quarter of an hour.";
        } catch (const std::exception& error) {
            outcome.mode.reset();
            outcome.sentence = error.what();
            outcome.reason = reasonOf(error);
        }
        std::filesystem::remove(m_output);
        if (outcome.planned == Mode::boxlift && outcome.mode == Mode::reencode)
            outcome.reason = reasonAgainstCopy(outcome.target);
    }

    void measure(Outcome& outcome) const {
        const auto tracks = m_source.all(test::StreamKind::video);
        const bool isCompared = outcome.target == Target::mp4 && outcome.mode == Mode::reencode &&
                                !tracks.empty() && test::isPlain(*tracks.front());
        if (isCompared)
            outcome.likeness = test::likeness(m_file.path, m_output);
    }

    /// Converting falls back without a word; copying alone says why it cannot be done.
    std::string reasonAgainstCopy(Target target) const {
        std::string reason;
        try {
            Converter::exportAsset(media::defaultFactory().openAsset(m_file.path, {}),
                                   ExportPreset::AVAssetExportPresetPassthrough, fileType(target),
                                   m_output, [](double) {});
        } catch (const std::exception& error) {
            reason = reasonOf(error);
        }
        std::filesystem::remove(m_output);
        return reason;
    }

    const test::CorpusFile& m_file;
    std::filesystem::path m_output;
    MediaInfo m_info;
    test::ProbedFile m_source;
    FileReport m_report;
};

} // namespace

std::vector<FileReport> sweep(const std::vector<test::CorpusFile>& files,
                              const std::filesystem::path& scratch) {
    std::vector<FileReport> reports(files.size());
    std::atomic<std::size_t> next = 0;
    const auto work = [&](std::size_t worker) {
        const auto output = scratch / ("out" + std::to_string(worker));
        for (std::size_t i = next++; i < files.size(); i = next++) {
            reports[i] = FileSweep(files[i], output).run();
            std::cerr << (std::to_string(i + 1) + '/' + std::to_string(files.size()) + ' ' +
                          files[i].name + '\n');
        }
    };
    {
        std::vector<std::jthread> threads;
        for (std::size_t worker = 0; worker < workers; ++worker)
            threads.emplace_back(work, worker);
    }
    return reports;
}

} // namespace boxlift::fidelity
