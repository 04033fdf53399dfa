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

/// To linear light with BT.709's primaries, then the highlights are rolled off. 100 cd/m² is the
/// white of standard range.
constexpr const char* toLinear = "zscale=transfer=linear:npl=100:primaries=bt709";
constexpr const char* toneMap = "format=gbrpf32le,tonemap=tonemap=hable:desat=0,"
                                "zscale=transfer=bt709:matrix=bt709:range=limited";

constexpr const char* scaling = ":flags=bicubic+accurate_rnd+full_chroma_int";
/// The same curve, for the other scaler.
constexpr const char* scalingToLinear = ":filter=bicubic:param_a=0:param_b=0.6";

/// Pixels to a sample of chroma, at most.
constexpr int coarsestChroma = 4;

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

std::string dimensions(PictureSize size) {
    return "width=" + std::to_string(size.width) + ":height=" + std::to_string(size.height);
}

std::string scaleTo(PictureSize size) {
    return "scale=" + dimensions(size) + scaling;
}

/// What makes light linear can scale as well. Then no small chroma is made in between, which is
/// faster, and comes nearer to what pictures look like that are scaled at the very end. But it
/// takes no part of a chroma sample, and would make pictures larger in linear light, where edges
/// ring.
bool canScaleToLinear(PictureSize from, PictureSize to) {
    return from.width % coarsestChroma == 0 && from.height % coarsestChroma == 0 &&
           to.width <= from.width && to.height <= from.height;
}

std::string mapHighRange(PictureSize from, PictureSize to) {
    Chain chain;
    if (from == to) {
        chain.add(toLinear);
    } else if (canScaleToLinear(from, to)) {
        chain.add(std::string(toLinear) + ":" + dimensions(to) + scalingToLinear);
    } else {
        chain.add(scaleTo(to));
        chain.add(toLinear);
    }
    chain.add(toneMap);
    return chain.text();
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
        chain.add(mapHighRange(pictures.size, size));
    } else if (!isPlain) {
        chain.add(convert(pictures, size));
    }
    chain.add("format=yuv420p");
    chain.add("setsar=1");
    return chain.text();
}

} // namespace boxlift::media
