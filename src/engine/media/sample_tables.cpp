#include "engine/media/sample_tables.h"

#include <algorithm>
#include <array>
#include <optional>
#include <set>

#include "engine/media/index_boxes.h"

namespace boxlift::media {

namespace {

using box_bytes::Bytes;
using box_bytes::headerSize;
using box_bytes::numberIn;
using box_bytes::put;
using index_boxes::Contents;
using index_boxes::Nest;

constexpr std::size_t numberSize = 4;

/// Goes through the runs in order.
class RunReader {
public:
    explicit RunReader(const SampleRuns& samples) : m_left(samples.runs) {}

    bool isAtEnd() const { return m_left.empty(); }
    bool has(std::uint64_t count) const { return count <= m_left.size(); }
    const SampleRuns::Run& next() {
        const SampleRuns::Run& run = m_left.front();
        m_left = m_left.subspan(1);
        return run;
    }
    /// How many samples are in the next `count` runs together.
    std::uint64_t samplesOf(std::uint64_t count) {
        std::uint64_t samples = 0;
        for (; count > 0; --count)
            samples += next().samples;
        return samples;
    }

private:
    std::span<const SampleRuns::Run> m_left;
};

/// The rows of a table: numbers of four bytes behind some of its header, which end with how many
/// rows there are.
struct Rows {
    Contents header;
    Contents rows;
    std::size_t width = 0;

    static std::optional<Rows> in(Contents table, std::size_t headerBytes, std::size_t numbers) {
        const std::size_t width = numbers * numberSize;
        if (table.size() < headerBytes)
            return std::nullopt;
        const auto count = numberIn(table.subspan(headerBytes - numberSize), numberSize);
        if (count != (table.size() - headerBytes) / width)
            return std::nullopt;
        return Rows{table.first(headerBytes), table.subspan(headerBytes), width};
    }

    std::size_t count() const { return rows.size() / width; }
    std::uint64_t at(std::size_t row, std::size_t number) const {
        return numberIn(rows.subspan(row * width + number * numberSize), numberSize);
    }
    /// The same table with other rows.
    Bytes with(const Bytes& others) const {
        Bytes table;
        put(table, header.first(header.size() - numberSize));
        put(table, others.size() / width, numberSize);
        put(table, others);
        return table;
    }
};

/// Rows that say how many samples there are of a kind, equal neighbours in one.
class KindsWriter {
public:
    void add(std::uint64_t count, std::uint64_t kind) {
        if (count == 0)
            return;
        if (m_count > 0 && kind != m_kind)
            flush();
        m_kind = kind;
        m_count += count;
    }
    Bytes take() {
        flush();
        return std::move(m_rows);
    }

private:
    void flush() {
        if (m_count > 0) {
            put(m_rows, m_count, numberSize);
            put(m_rows, m_kind, numberSize);
        }
        m_count = 0;
    }

    std::uint64_t m_count = 0;
    std::uint64_t m_kind = 0;
    Bytes m_rows;
};

using Table = std::optional<Bytes>;

/// `stts` (8.6.1.2): how many samples last how long.
Table times(Contents table, const SampleRuns& samples) {
    const auto old = Rows::in(table, 8, 2);
    RunReader runs(samples);
    KindsWriter durations;
    for (std::size_t row = 0; old && row < old->count(); ++row) {
        for (std::uint64_t count = old->at(row, 0); count > 0; --count) {
            if (runs.isAtEnd())
                return std::nullopt;
            const SampleRuns::Run& run = runs.next();
            const std::uint64_t before = std::uint64_t{run.samples - 1} * run.duration;
            if (before > old->at(row, 1))
                return std::nullopt;
            durations.add(run.samples - 1, run.duration);
            durations.add(1, old->at(row, 1) - before);
        }
    }
    return old && runs.isAtEnd() ? Table(old->with(durations.take())) : std::nullopt;
}

/// `stsc` (8.7.4): from which chunk on how many samples are in each, and of which description.
Table chunks(Contents table, const SampleRuns& samples) {
    const auto old = Rows::in(table, 8, 3);
    RunReader runs(samples);
    Bytes rows;
    std::array<std::uint64_t, 2> last{};
    for (std::size_t row = 0; old && row < old->count(); ++row) {
        const auto isOfRow = [&](std::uint64_t chunk) {
            return row + 1 < old->count() ? chunk < old->at(row + 1, 0) : !runs.isAtEnd();
        };
        const std::uint64_t inChunk = old->at(row, 1);
        for (std::uint64_t chunk = old->at(row, 0); isOfRow(chunk); ++chunk) {
            if (inChunk == 0 || !runs.has(inChunk))
                return std::nullopt;
            const std::array now{runs.samplesOf(inChunk), old->at(row, 2)};
            if (now != last)
                for (const std::uint64_t number : {chunk, now[0], now[1]})
                    put(rows, number, numberSize);
            last = now;
        }
    }
    return old && runs.isAtEnd() ? Table(old->with(rows)) : std::nullopt;
}

/// `sbgp` (8.9.2): how many samples are in which group.
Table groups(Contents table, const SampleRuns& samples) {
    const bool hasParameter = !table.empty() && table[0] == 1;
    const auto old = Rows::in(table, hasParameter ? 16 : 12, 2);
    RunReader runs(samples);
    KindsWriter groups;
    for (std::size_t row = 0; old && row < old->count(); ++row) {
        if (!runs.has(old->at(row, 0)))
            return std::nullopt;
        groups.add(runs.samplesOf(old->at(row, 0)), old->at(row, 1));
    }
    // Samples behind the last row are in no group.
    return old ? Table(old->with(groups.take())) : std::nullopt;
}

/// `stsz` (8.7.3.2): one size for all, or that of each.
Table sizes(Contents table, const SampleRuns& samples) {
    constexpr std::size_t versionSize = 4;
    if (table.size() < versionSize || samples.sizes.empty())
        return std::nullopt;
    const bool isOne = std::ranges::all_of(
        samples.sizes, [&](std::uint32_t size) { return size == samples.sizes.front(); });
    Bytes result;
    result.reserve(table.size() + samples.sizes.size() * numberSize);
    put(result, table.first(versionSize));
    put(result, isOne ? samples.sizes.front() : 0, numberSize);
    put(result, samples.sizes.size(), numberSize);
    for (std::size_t i = 0; !isOne && i < samples.sizes.size(); ++i)
        put(result, samples.sizes[i], numberSize);
    return result;
}

Table unchanged(Contents table, const SampleRuns&) {
    return Bytes(table.begin(), table.end());
}

struct TableRow {
    FourCharCode type;
    Table (*expand)(Contents, const SampleRuns&);
    bool isRequired = false;
};

/// Of any other nobody knows what would become of it.
constexpr TableRow knownTables[] = {
    {fourCharCode("stts"), times, true}, {fourCharCode("stsc"), chunks, true},
    {fourCharCode("stsz"), sizes, true}, {fourCharCode("sbgp"), groups},
    {fourCharCode("stsd"), unchanged},   {fourCharCode("sgpd"), unchanged},
    {fourCharCode("stco"), unchanged},   {fourCharCode("co64"), unchanged},
};

/// The contents of a sample table, `stbl`; nothing where one does not fit.
Table expanded(Contents tables, const SampleRuns& samples) {
    Bytes result;
    result.reserve(tables.size() + samples.sizes.size() * numberSize);
    std::set<FourCharCode> found;
    bool doesFit = true;
    index_boxes::forEachBox(tables, [&](FourCharCode type, Contents contents) {
        const auto* row = std::ranges::find(knownTables, type, &TableRow::type);
        const bool isKnown = row != std::end(knownTables);
        const Table table = isKnown ? row->expand(contents, samples) : std::nullopt;
        doesFit = doesFit && table;
        if (table)
            box_bytes::putBox(result, type, *table);
        found.insert(type);
    });
    const auto isThere = [&](const TableRow& row) {
        return !row.isRequired || found.contains(row.type);
    };
    return doesFit && std::ranges::all_of(knownTables, isThere) ? Table(std::move(result))
                                                                : std::nullopt;
}

} // namespace

bool expandSamples(Bytes& index, std::uint32_t track, const SampleRuns& samples) {
    Nest nest = index_boxes::nestOfTrack(index, track);
    if (nest.empty() ||
        !index_boxes::enterEach(index, nest,
                                {fourCharCode("mdia"), fourCharCode("minf"), fourCharCode("stbl")}))
        return false;
    const std::size_t begin = nest.back() + headerSize;
    const std::size_t size = index_boxes::endOf(index, nest.back()) - begin;
    const Table tables = expanded(Contents(index).subspan(begin, size), samples);
    if (tables)
        index_boxes::replace(index, nest, *tables);
    return tables.has_value();
}

} // namespace boxlift::media
