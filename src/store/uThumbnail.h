#pragma once

#include <QByteArray>
#include <QVariant>

#include <stdexcept>

// Thumbnails of item photographs, as stored in ThumbFront and ThumbBack.

// Every thumbnail is exactly this many pixels high.
inline constexpr int ThumbnailHeight = 200;
// The widest thumbnail made (a picture 50 times as wide as high); a wider one raises.
inline constexpr int MaxThumbnailWidth = 50 * ThumbnailHeight;

// Raised when a picture cannot be decoded or the thumbnail cannot be encoded.
class EThumbnailError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

// Width of the thumbnail of a w x h picture: w / (h / 200) rounded to nearest, ties to even.
int ThumbnailWidth(int width, int height);

// Decodes the picture, scales it to ThumbnailHeight pixels high keeping its aspect ratio (small
// pictures are scaled up) and encodes it again in the format it came in, with the encoder's own
// defaults. A palette picture (such as an indexed PNG) gives a palette thumbnail over the source's own
// colours; a picture already ThumbnailHeight high is not resampled. A null picture gives a null
// result. Throws EThumbnailError for bytes that are no readable picture, and for a picture whose
// thumbnail would be wider than MaxThumbnailWidth.
QByteArray MakeThumbnail(const QByteArray& picture);

// The same for a field value: NULL gives NULL, otherwise the value's bytes are used.
QVariant MakeThumbnail(const QVariant& picture);
