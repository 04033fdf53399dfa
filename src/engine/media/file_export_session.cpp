#include "engine/media/file_export_session.h"

#include <algorithm>

#include "engine/media/muxer.h"
#include "model/cancelled.h"

namespace boxlift::media {

namespace {

/// The largest progress of a session that has not completed.
constexpr double almostDone = 0.999;

} // namespace

void FileExportSession::exportAsynchronously() {
    {
        const std::lock_guard lock(m_mutex);
        m_status = Status::exporting;
    }
    m_thread = std::thread([this] { work(); });
}

bool FileExportSession::waitUntilFinished(std::chrono::milliseconds timeout) {
    std::unique_lock lock(m_mutex);
    return m_ended.wait_for(lock, timeout, [this] { return m_status > Status::exporting; });
}

float FileExportSession::progress() const {
    const std::lock_guard lock(m_muxerMutex);
    const float standing = m_progress.load();
    if (!m_finishing)
        return standing;
    const double left = almostDone - standing;
    return standing + static_cast<float>(left * m_finishing->finishedFraction());
}

ExportSession::Status FileExportSession::status() const {
    const std::lock_guard lock(m_mutex);
    return m_status;
}

std::exception_ptr FileExportSession::error() const {
    const std::lock_guard lock(m_mutex);
    return m_error;
}

void FileExportSession::cancelExport() {
    m_stop.request_stop();
}

void FileExportSession::setProgress(double fraction) {
    const auto value = static_cast<float>(std::clamp(fraction, 0.0, almostDone));
    float standing = m_progress.load();
    while (standing < value && !m_progress.compare_exchange_weak(standing, value)) {
    }
}

void FileExportSession::finish(Muxer& muxer) {
    // What the muxer has reached stays when it ends, well or not.
    const auto show = [this](const Muxer* finishing) {
        const float reached = progress();
        const std::lock_guard lock(m_muxerMutex);
        setProgress(reached);
        m_finishing = finishing;
    };
    show(&muxer);
    try {
        muxer.finish();
    } catch (...) {
        show(nullptr);
        throw;
    }
    show(nullptr);
}

void FileExportSession::join() {
    m_stop.request_stop();
    if (m_thread.joinable())
        m_thread.join();
}

void FileExportSession::work() {
    try {
        if (m_stop.stop_requested())
            throw Cancelled();
        run(m_settings, m_stop.get_token());
        m_progress.store(1);
        end(Status::completed, nullptr);
    } catch (const Cancelled&) {
        end(Status::cancelled, nullptr);
    } catch (...) {
        // An interrupted library call may answer with any code.
        const bool cancelled = m_stop.stop_requested();
        end(cancelled ? Status::cancelled : Status::failed,
            cancelled ? nullptr : std::current_exception());
    }
}

void FileExportSession::end(Status status, std::exception_ptr error) {
    const std::lock_guard lock(m_mutex);
    m_status = status;
    m_error = std::move(error);
    m_ended.notify_all();
}

} // namespace boxlift::media
