#include "engine/media/stretched_encoder.h"

#include <algorithm>
#include <limits>

#include "engine/media/aac_window.h"

namespace boxlift::media {

namespace {

constexpr auto unbounded = std::numeric_limits<std::size_t>::max();
/// So many samples are read at a time, once there is room again.
constexpr std::int64_t refill = 32768;

std::optional<AacWindow> windowOf(const AVPacket& packet) {
    return readAacWindow({packet.data, static_cast<std::size_t>(packet.size)});
}

} // namespace

StretchedEncoder::StretchedEncoder(const AudioEncoder::Settings& settings, const StretchPlan& plan,
                                   const std::filesystem::path& path)
    : m_settings(settings), m_plan(plan), m_path(path), m_forWorkers(unbounded),
      m_inOrder(unbounded), m_threads([this] { wakeAll(); }) {}

StretchedEncoder::~StretchedEncoder() {
    abort();
    m_threads.join();
}

void StretchedEncoder::start() {
    for (int i = 0; i < m_plan.workers; ++i)
        m_threads.start("boxlift.encode", [this] { work(); });
}

bool StretchedEncoder::isPushImmediate() const {
    const std::lock_guard lock(m_mutex);
    return hasRoom();
}

bool StretchedEncoder::waitForRoom(std::chrono::milliseconds timeout) {
    std::unique_lock lock(m_mutex);
    return m_changed.wait_for(lock, timeout, [this] { return hasRoom(); });
}

bool StretchedEncoder::push(SampleBuffer buffer, std::int64_t position) {
    const auto count = static_cast<std::int64_t>(buffer.frameCount());
    if (count == 0)
        return isPushImmediate();
    {
        std::unique_lock lock(m_mutex);
        m_changed.wait(lock, [this] { return hasRoom(); });
        if (m_isClosed || m_hasEnded)
            return false;
        m_waiting += count;
        m_isFull = m_waiting >= m_plan.readAhead;
    }
    if (m_recent.empty())
        m_origin = m_nextBegin = position;
    const std::int64_t follows = m_recent.empty() ? position : m_recent.back().end();
    feed({std::make_shared<const SampleBuffer>(std::move(buffer)), 0, follows, count});
    return true;
}

void StretchedEncoder::feed(const PcmSlice& slice) {
    remember(slice);
    std::erase_if(m_feeding, [&slice](const StretchPtr& stretch) { return !stretch->feed(slice); });
    // Only now is it certain that there is something in the next one.
    while (slice.end() > m_nextBegin)
        openStretch();
}

void StretchedEncoder::remember(const PcmSlice& slice) {
    m_recent.push_back(slice);
    while (m_recent.front().end() <= slice.position - AudioStretch::lead)
        m_recent.pop_front();
}

void StretchedEncoder::openStretch() {
    const bool isFirst = m_nextBegin == m_origin;
    const std::int64_t end = m_nextBegin + (isFirst ? m_plan.first : m_plan.length);
    const auto stretch = std::make_shared<AudioStretch>(m_origin, m_nextBegin, end);
    m_nextBegin = end;
    {
        const std::lock_guard lock(m_mutex);
        std::erase_if(m_stretches, [](const auto& one) { return one.expired(); });
        m_stretches.push_back(stretch);
        if (m_hasEnded)
            stretch->abort();
    }
    bool needsMore = true;
    for (const PcmSlice& slice : m_recent)
        needsMore = needsMore && stretch->feed(slice);
    if (needsMore)
        m_feeding.push_back(stretch);
    m_inOrder.push(stretch);
    m_forWorkers.push(stretch);
}

void StretchedEncoder::close() {
    {
        const std::lock_guard lock(m_mutex);
        m_isClosed = true;
    }
    for (const StretchPtr& stretch : m_feeding)
        stretch->endOfInput();
    m_feeding.clear();
    m_inOrder.close();
    m_forWorkers.close();
    m_changed.notify_all();
}

void StretchedEncoder::work() {
    while (const auto stretch = m_forWorkers.pop())
        (*stretch)->encode(m_settings, m_path, m_encoded);
}

av::PacketPtr StretchedEncoder::next() {
    if (av::PacketPtr packet = nextOfStretches()) {
        taken(*packet);
        return packet;
    }
    end();
    m_threads.join();
    m_threads.rethrow();
    return nullptr;
}

av::PacketPtr StretchedEncoder::nextOfStretches() {
    for (;;) {
        if (!m_current)
            m_current = m_following ? std::move(m_following) : m_inOrder.pop().value_or(nullptr);
        if (!m_current)
            return nullptr;
        if (av::PacketPtr packet = m_current->next()) {
            if (isSeam(*packet)) {
                m_current->abort();
                m_current = std::move(m_following);
            }
            return packet;
        }
        // Without a seam: the following one, read as far as this one, goes on.
        m_current.reset();
    }
}

/// Whether the following stretch can go on after this packet of the current one. Past the current
/// one's end the two are read side by side.
bool StretchedEncoder::isSeam(const AVPacket& packet) {
    if (packet.pts < m_current->end())
        return false;
    if (!m_following)
        m_following = m_inOrder.pop().value_or(nullptr);
    const av::PacketPtr twin = m_following ? m_following->next() : nullptr;
    if (!twin)
        return false;
    const auto window = windowOf(packet);
    return window && window == windowOf(*twin);
}

void StretchedEncoder::taken(const AVPacket& packet) {
    {
        const std::lock_guard lock(m_mutex);
        m_waiting -= packet.duration;
        if (!m_isFull || m_waiting > m_plan.readAhead - refill)
            return;
        m_isFull = false;
    }
    m_changed.notify_all();
}

bool StretchedEncoder::waitUntilTaken(std::chrono::milliseconds timeout) {
    std::unique_lock lock(m_mutex);
    return m_changed.wait_for(lock, timeout, [this] { return m_hasEnded; });
}

void StretchedEncoder::abort() {
    m_threads.abort();
}

void StretchedEncoder::end() {
    {
        const std::lock_guard lock(m_mutex);
        m_hasEnded = true;
    }
    m_changed.notify_all();
}

void StretchedEncoder::wakeAll() {
    m_inOrder.abort();
    m_forWorkers.abort();
    {
        const std::lock_guard lock(m_mutex);
        m_hasEnded = true;
        for (const auto& one : m_stretches)
            if (const StretchPtr stretch = one.lock())
                stretch->abort();
    }
    m_changed.notify_all();
}

} // namespace boxlift::media
