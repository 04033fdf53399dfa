#pragma once

#include <algorithm>
#include <cstdint>
#include <string_view>
#include <vector>

#include "engine/media/av/conversion.h"
#include "engine/media/av/handles.h"

namespace boxlift::media::test {

/// What a stream made by hand is like.
struct StreamTraits {
    AVCodecID codec = AV_CODEC_ID_NONE;
    /// Four characters; empty for none.
    std::string_view tag{};
    std::vector<std::uint8_t> header{};
};

/// Streams without a file.
class StreamMaker {
public:
    AVFormatContext& context() { return *m_context; }

    AVStream& add(const StreamTraits& traits) {
        AVStream& stream = *avformat_new_stream(m_context.get(), nullptr);
        AVCodecParameters& parameters = *stream.codecpar;
        parameters.codec_id = traits.codec;
        parameters.codec_type = avcodec_get_type(traits.codec);
        if (traits.tag.size() == 4)
            parameters.codec_tag =
                MKTAG(traits.tag[0], traits.tag[1], traits.tag[2], traits.tag[3]);
        const std::size_t size = traits.header.size();
        parameters.extradata =
            static_cast<std::uint8_t*>(av_mallocz(size + AV_INPUT_BUFFER_PADDING_SIZE));
        parameters.extradata_size = static_cast<int>(size);
        std::copy(traits.header.begin(), traits.header.end(), parameters.extradata);
        return stream;
    }

private:
    av::OutputContextPtr m_context{avformat_alloc_context()};
};

} // namespace boxlift::media::test
