#include "engine/media/video_filter_chain.h"

namespace boxlift::media {

namespace {

/// The deinterlacer cannot work on smaller pictures.
constexpr int smallestWithFields = 16;

constexpr const char* deinterlace = "bwdif=mode=send_frame:parity=auto:deint=interlaced";

/// Colour times alpha is the colour over black. The filter asks for a known range.
constexpr const char* flattenRgb = "format=gbrap|gbrap10le|gbrap12le|gbrap16le,"
                                   "premultiply=inplace=1";
constexpr const char* flattenLimited = "setparams=range=limited,premultiply=inplace=1";
constexpr const char* flattenFull = "setparams=range=full,premultiply=inplace=1";

/// To linear light, there to BT.709's primaries, then the highlights are rolled off. 100 cd/m² is
/// the white of standard range.
constexpr const char* toneMap = "zscale=transfer=linear:npl=100,format=gbrpf32le,"
                                "zscale=primaries=bt709,tonemap=tonemap=hable:desat=0,"
                                "zscale=transfer=bt709:matrix=bt709:range=limited";

constexpr const char* scaling = ":flags=bicubic+accurate_rnd+full_chroma_int";

const AVPixFmtDescriptor* descriptor(AVPixelFormat format) {
    return av_pix_fmt_desc_get(format);
}

bool hasAlpha(AVPixelFormat format) {
    const AVPixFmtDescriptor* description = descriptor(format);
    return description && (description->flags & AV_PIX_FMT_FLAG_ALPHA) != 0;
}

class Chain {
public:
    void add(const std::string& filter) {
        if (!m_text.empty())
            m_text += ',';
        m_text += filter;
    }
    const std::string& text() const { return m_text; }

private:
    std::string m_text;
};

bool canHaveFields(PictureSize size) {
    return size.width >= smallestWithFields && size.height >= smallestWithFields;
}

const char* flatten(const DecodedPictures& pictures) {
    if (isRgb(pictures.format))
        return flattenRgb;
    return pictures.colour.range == AVCOL_RANGE_JPEG ? flattenFull : flattenLimited;
}

std::string scaleTo(PictureSize size) {
    return "scale=" + std::to_string(size.width) + ":" + std::to_string(size.height) + scaling;
}

std::string convert(const DecodedPictures& pictures, PictureSize size) {
    std::string filter = scaleTo(size) + ":out_range=limited";
    if (isRgb(pictures.format)) {
        const AVColorSpace matrix = encodedColour(pictures.colour, pictures.format, size).matrix;
        filter.append(":out_color_matrix=").append(av_color_space_name(matrix));
    }
    return filter;
}

} // namespace

std::string filterChain(const DecodedPictures& pictures, PictureSize size) {
    Chain chain;
    if (pictures.isInterlaced && canHaveFields(pictures.size))
        chain.add(deinterlace);
    if (hasAlpha(pictures.format))
        chain.add(flatten(pictures));

    const bool isFitting = pictures.size == size;
    const bool isPlain = pictures.format == AV_PIX_FMT_YUV420P &&
                         pictures.colour.range != AVCOL_RANGE_JPEG && isFitting;
    if (pictures.colour.isHighRange()) {
        if (!isFitting)
            chain.add(scaleTo(size));
        chain.add(toneMap);
    } else if (!isPlain) {
        chain.add(convert(pictures, size));
    }
    chain.add("format=yuv420p");
    chain.add("setsar=1");
    return chain.text();
}

} // namespace boxlift::media
