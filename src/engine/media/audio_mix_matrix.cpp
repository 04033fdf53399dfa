#include "engine/media/audio_mix_matrix.h"

#include <algorithm>
#include <array>
#include <numeric>

namespace boxlift::media {

namespace {

constexpr double whole = 1;
constexpr double three = 0.70710678118654752; // -3 dB
constexpr double six = 0.5;                   // -6 dB

/// Where a speaker's sound goes when the output has both `first` and `second` (or `first` alone,
/// where there is no second) and the source lacks `unless`.
struct MixRow {
    AVChannel from;
    AVChannel first;
    double firstGain;
    AVChannel second = AV_CHAN_NONE;
    double secondGain = 0;
    AVChannel unless = AV_CHAN_NONE;
};

constexpr AVChannel left = AV_CHAN_FRONT_LEFT;
constexpr AVChannel right = AV_CHAN_FRONT_RIGHT;
constexpr AVChannel centre = AV_CHAN_FRONT_CENTER;
constexpr AVChannel backLeft = AV_CHAN_BACK_LEFT;
constexpr AVChannel backRight = AV_CHAN_BACK_RIGHT;
constexpr AVChannel backCentre = AV_CHAN_BACK_CENTER;
constexpr AVChannel lowFrequency = AV_CHAN_LOW_FREQUENCY;

/// The first row of a speaker that fits is the one that counts. Low frequencies have no second
/// choice: small speakers would only be overdriven by them.
constexpr std::array mixRows{
    MixRow{left, left, whole},
    MixRow{left, centre, three},
    MixRow{right, right, whole},
    MixRow{right, centre, three},
    MixRow{centre, centre, whole},
    MixRow{centre, left, three, right, three},
    MixRow{lowFrequency, lowFrequency, whole},
    MixRow{AV_CHAN_LOW_FREQUENCY_2, lowFrequency, whole},
    MixRow{backLeft, backLeft, whole},
    MixRow{backLeft, left, three},
    MixRow{backLeft, centre, six},
    MixRow{backRight, backRight, whole},
    MixRow{backRight, right, three},
    MixRow{backRight, centre, six},
    MixRow{backCentre, backCentre, whole},
    MixRow{backCentre, backLeft, three, backRight, three},
    MixRow{backCentre, left, six, right, six},
    MixRow{backCentre, centre, six},
    // Side speakers are the back ones of 5.1, unless the source has back ones besides.
    MixRow{AV_CHAN_SIDE_LEFT, backLeft, whole, AV_CHAN_NONE, 0, backLeft},
    MixRow{AV_CHAN_SIDE_LEFT, backLeft, three},
    MixRow{AV_CHAN_SIDE_LEFT, left, three},
    MixRow{AV_CHAN_SIDE_LEFT, centre, six},
    MixRow{AV_CHAN_SIDE_RIGHT, backRight, whole, AV_CHAN_NONE, 0, backRight},
    MixRow{AV_CHAN_SIDE_RIGHT, backRight, three},
    MixRow{AV_CHAN_SIDE_RIGHT, right, three},
    MixRow{AV_CHAN_SIDE_RIGHT, centre, six},
    MixRow{AV_CHAN_FRONT_LEFT_OF_CENTER, left, three},
    MixRow{AV_CHAN_FRONT_LEFT_OF_CENTER, centre, six},
    MixRow{AV_CHAN_FRONT_RIGHT_OF_CENTER, right, three},
    MixRow{AV_CHAN_FRONT_RIGHT_OF_CENTER, centre, six},
    // A finished stereo mix that comes besides or instead of the speakers.
    MixRow{AV_CHAN_STEREO_LEFT, left, whole},
    MixRow{AV_CHAN_STEREO_LEFT, centre, three},
    MixRow{AV_CHAN_STEREO_RIGHT, right, whole},
    MixRow{AV_CHAN_STEREO_RIGHT, centre, three},
    MixRow{AV_CHAN_WIDE_LEFT, left, three},
    MixRow{AV_CHAN_WIDE_LEFT, centre, six},
    MixRow{AV_CHAN_WIDE_RIGHT, right, three},
    MixRow{AV_CHAN_WIDE_RIGHT, centre, six},
    MixRow{AV_CHAN_SURROUND_DIRECT_LEFT, backLeft, three},
    MixRow{AV_CHAN_SURROUND_DIRECT_LEFT, left, six},
    MixRow{AV_CHAN_SURROUND_DIRECT_LEFT, centre, six},
    MixRow{AV_CHAN_SURROUND_DIRECT_RIGHT, backRight, three},
    MixRow{AV_CHAN_SURROUND_DIRECT_RIGHT, right, six},
    MixRow{AV_CHAN_SURROUND_DIRECT_RIGHT, centre, six},
    MixRow{AV_CHAN_TOP_CENTER, left, six, right, six},
    MixRow{AV_CHAN_TOP_CENTER, centre, six},
    MixRow{AV_CHAN_TOP_FRONT_LEFT, left, three},
    MixRow{AV_CHAN_TOP_FRONT_LEFT, centre, six},
    MixRow{AV_CHAN_TOP_FRONT_CENTER, centre, three},
    MixRow{AV_CHAN_TOP_FRONT_CENTER, left, six, right, six},
    MixRow{AV_CHAN_TOP_FRONT_RIGHT, right, three},
    MixRow{AV_CHAN_TOP_FRONT_RIGHT, centre, six},
    MixRow{AV_CHAN_TOP_SIDE_LEFT, backLeft, three},
    MixRow{AV_CHAN_TOP_SIDE_LEFT, left, six},
    MixRow{AV_CHAN_TOP_SIDE_LEFT, centre, six},
    MixRow{AV_CHAN_TOP_SIDE_RIGHT, backRight, three},
    MixRow{AV_CHAN_TOP_SIDE_RIGHT, right, six},
    MixRow{AV_CHAN_TOP_SIDE_RIGHT, centre, six},
    MixRow{AV_CHAN_TOP_BACK_LEFT, backLeft, three},
    MixRow{AV_CHAN_TOP_BACK_LEFT, left, six},
    MixRow{AV_CHAN_TOP_BACK_LEFT, centre, six},
    MixRow{AV_CHAN_TOP_BACK_CENTER, backLeft, six, backRight, six},
    MixRow{AV_CHAN_TOP_BACK_CENTER, left, six, right, six},
    MixRow{AV_CHAN_TOP_BACK_CENTER, centre, six},
    MixRow{AV_CHAN_TOP_BACK_RIGHT, backRight, three},
    MixRow{AV_CHAN_TOP_BACK_RIGHT, right, six},
    MixRow{AV_CHAN_TOP_BACK_RIGHT, centre, six},
    MixRow{AV_CHAN_BOTTOM_FRONT_LEFT, left, three},
    MixRow{AV_CHAN_BOTTOM_FRONT_LEFT, centre, six},
    MixRow{AV_CHAN_BOTTOM_FRONT_CENTER, centre, three},
    MixRow{AV_CHAN_BOTTOM_FRONT_CENTER, left, six, right, six},
    MixRow{AV_CHAN_BOTTOM_FRONT_RIGHT, right, three},
    MixRow{AV_CHAN_BOTTOM_FRONT_RIGHT, centre, six},
};

bool contains(const AVChannelLayout& layout, AVChannel channel) {
    return av_channel_layout_index_from_channel(&layout, channel) >= 0;
}

/// A matrix under construction.
class Mix {
public:
    Mix(const ChannelLayout& from, std::uint64_t to)
        : m_from(from), m_to(ChannelLayout::ofMask(to)),
          m_gains(static_cast<std::size_t>(from.count() * m_to.count())) {}

    void addChannel(int index) {
        const AVChannel channel = m_from.channel(index);
        const auto row = std::find_if(mixRows.begin(), mixRows.end(), [&](const MixRow& candidate) {
            return candidate.from == channel && fits(candidate);
        });
        if (row != mixRows.end()) {
            add(row->first, index, row->firstGain);
            add(row->second, index, row->secondGain);
        } else if (!isLow(channel)) {
            addUnknown(index);
        }
    }

    std::vector<double> scaled() && {
        if (isSilent())
            for (int i = 0; i < m_from.count(); ++i)
                addUnknown(i);
        const double loudest = loudestRow();
        for (double& gain : m_gains)
            gain /= loudest;
        return std::move(m_gains);
    }

private:
    static bool isLow(AVChannel channel) {
        return channel == lowFrequency || channel == AV_CHAN_LOW_FREQUENCY_2;
    }

    bool fits(const MixRow& row) const {
        return contains(m_to.get(), row.first) &&
               (row.second == AV_CHAN_NONE || contains(m_to.get(), row.second)) &&
               (row.unless == AV_CHAN_NONE || !contains(m_from.get(), row.unless));
    }

    void add(AVChannel to, int from, double gain) {
        if (to == AV_CHAN_NONE)
            return;
        const int row = av_channel_layout_index_from_channel(&m_to.get(), to);
        const auto width = static_cast<std::size_t>(m_from.count());
        m_gains[static_cast<std::size_t>(row) * width + static_cast<std::size_t>(from)] += gain;
    }

    /// Channels that nobody has named: even ones to the left, odd ones to the right.
    void addUnknown(int index) {
        if (!contains(m_to.get(), left))
            add(centre, index, whole);
        else
            add(index % 2 == 0 ? left : right, index, whole);
    }

    bool isSilent() const {
        return std::all_of(m_gains.begin(), m_gains.end(), [](double gain) { return gain == 0; });
    }

    double loudestRow() const {
        double loudest = 0;
        for (auto row = m_gains.begin(); row != m_gains.end(); row += m_from.count())
            loudest = std::max(loudest, std::accumulate(row, row + m_from.count(), 0.0));
        return loudest;
    }

    const ChannelLayout& m_from;
    ChannelLayout m_to;
    std::vector<double> m_gains;
};

} // namespace

std::vector<double> mixMatrix(const ChannelLayout& from, std::uint64_t to) {
    Mix mix(from, to);
    for (int i = 0; i < from.count(); ++i)
        mix.addChannel(i);
    return std::move(mix).scaled();
}

} // namespace boxlift::media
