#include <libde265/de265.h>
#include <libheif/heif.h>
#include <libheif/heif_plugin.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <memory>
#include <mutex>
#include <opencv2/imgproc.hpp>
#include <span>
#include <stdexcept>
#include <string>

#include "Platform/ImageCodec.h"
#include "backends/opencv/files/HevcSize.h"
#include "backends/opencv/files/PictureHeader.h"
#include "backends/opencv/files/PixelDecoders.h"

namespace pravik {
namespace {

/// A file with opacity holds two pictures of its size.
constexpr std::int64_t mostCodedPixels = 2 * maximumPicturePixels;
/// libheif limits the sides of a picture, whose product is then no larger than what is allowed.
constexpr int longestSide = 10'000;
static_assert(std::int64_t{longestSide} * longestSide <= maximumPicturePixels);

/// What the pictures of the file that this thread decodes may still have.
thread_local std::int64_t codedPixelsLeft = 0;

// The decoder of single pictures that libheif is given: its own would believe any size that the coded picture tells,
// whatever the file has promised. A picture may be one tile of many.

const heif_error success{heif_error_Ok, heif_suberror_Unspecified, "success"};
const heif_error failure{heif_error_Decoder_plugin_error, heif_suberror_Unspecified, "damaged"};

struct Decoder {
  de265_decoder_context* context;
  /// Of the largest picture that was announced.
  std::int64_t pixels = 0;
};

de265_decoder_context* contextOf(void* decoder) {
  return static_cast<Decoder*>(decoder)->context;
}

heif_error newDecoder(void** decoder) {
  de265_decoder_context* context = de265_new_decoder();
  if (context == nullptr) return failure;
  *decoder = new Decoder{context};
  return success;
}

void freeDecoder(void* decoder) {
  de265_free_decoder(contextOf(decoder));
  delete static_cast<Decoder*>(decoder);
}

/// Whether what a unit of the network abstraction layer (ITU-T H.265, 7.3.1) begins may be decoded.
bool isAllowed(std::span<const std::uint8_t> unit, Decoder& decoder) {
  constexpr unsigned firstParameterSet = 32, sequenceParameterSet = 33, firstSlice = 0x80;
  constexpr std::size_t headerBytes = 2;
  if (unit.size() <= headerBytes) return true;
  const unsigned type = unit[0] >> 1U & 0x3FU;
  if (type == sequenceParameterSet) {
    const auto pixels = codedPixels(unit);
    if (!pixels || *pixels > maximumPicturePixels) return false;
    decoder.pixels = std::max(decoder.pixels, *pixels);
  }
  const bool beginsPicture = type < firstParameterSet && (unit[headerBytes] & firstSlice) != 0;
  if (beginsPicture) codedPixelsLeft -= decoder.pixels;
  return codedPixelsLeft >= 0;
}

/// Takes units, each behind its length in four bytes.
heif_error pushData(void* decoder, const void* data, std::size_t size) {
  constexpr std::size_t lengthBytes = 4;
  std::span<const std::uint8_t> rest(static_cast<const std::uint8_t*>(data), size);
  while (rest.size() >= lengthBytes) {
    const std::size_t length = static_cast<std::size_t>(rest[0]) << 24U | rest[1] << 16U | rest[2] << 8U | rest[3];
    rest = rest.subspan(lengthBytes);
    if (length > rest.size() || !isAllowed(rest.first(length), *static_cast<Decoder*>(decoder))) return failure;
    if (de265_push_NAL(contextOf(decoder), rest.data(), static_cast<int>(length), 0, nullptr) != DE265_OK)
      return failure;
    rest = rest.subspan(length);
  }
  return rest.empty() ? success : failure;
}

/// Copies a plane of brightness or colour.
bool copyPlane(const de265_image* from, int plane, heif_image* to, heif_channel channel) {
  const int width = de265_get_image_width(from, plane), height = de265_get_image_height(from, plane);
  const int bits = de265_get_bits_per_pixel(from, plane);
  // libheif has one depth for all planes.
  if (width < 1 || height < 1 || bits != de265_get_bits_per_pixel(from, 0)) return false;
  if (heif_image_add_plane(to, channel, width, height, bits).code != heif_error_Ok) return false;
  int fromStride = 0, toStride = 0;
  const std::uint8_t* source = de265_get_image_plane(from, plane, &fromStride);
  std::uint8_t* target = heif_image_get_plane(to, channel, &toStride);
  for (int y = 0; y < height; ++y)
    std::memcpy(target + std::ptrdiff_t{y} * toStride, source + std::ptrdiff_t{y} * fromStride,
                static_cast<std::size_t>(width) * (bits > 8 ? 2 : 1));
  return true;
}

/// How the numbers of the planes are meant.
void copyColourSpace(const de265_image* from, heif_image* to) {
  heif_color_profile_nclx* profile = heif_nclx_color_profile_alloc();
  if (profile == nullptr) return;
  heif_nclx_color_profile_set_matrix_coefficients(
      profile, static_cast<std::uint16_t>(de265_get_image_matrix_coefficients(from)));
  profile->full_range_flag = de265_get_image_full_range_flag(from) != 0 ? 1 : 0;
  heif_image_set_nclx_color_profile(to, profile);
  heif_nclx_color_profile_free(profile);
}

heif_error copyPicture(const de265_image* from, heif_image** to) {
  const de265_chroma chroma = de265_get_chroma_format(from);
  const bool isGrey = chroma == de265_chroma_mono;
  // The kinds of chroma have the same numbers.
  const heif_error made = heif_image_create(de265_get_image_width(from, 0), de265_get_image_height(from, 0),
                                            isGrey ? heif_colorspace_monochrome : heif_colorspace_YCbCr,
                                            static_cast<heif_chroma>(chroma), to);
  if (made.code != heif_error_Ok) return made;
  const bool whole = copyPlane(from, 0, *to, heif_channel_Y) &&
                     (isGrey || (copyPlane(from, 1, *to, heif_channel_Cb) && copyPlane(from, 2, *to, heif_channel_Cr)));
  if (!whole) {
    heif_image_release(*to);
    *to = nullptr;
    return failure;
  }
  copyColourSpace(from, *to);
  return success;
}

heif_error decodePicture(void* decoder, heif_image** picture) {
  *picture = nullptr;
  de265_decoder_context* context = contextOf(decoder);
  if (de265_flush_data(context) != DE265_OK) return failure;
  for (int more = 1; more != 0;) {
    if (de265_decode(context, &more) != DE265_OK) return failure;
    if (const de265_image* decoded = de265_get_next_picture(context)) return copyPicture(decoded, picture);
  }
  return failure;
}

constexpr const char* decoderName = "pravik";

/// Tells libheif of the decoder, which is used by those alone who ask for it by its name.
void registerDecoder() {
  static const heif_decoder_plugin decoder{.plugin_api_version = 3,
                                           .get_plugin_name = [] { return decoderName; },
                                           .init_plugin = nullptr,
                                           .deinit_plugin = nullptr,
                                           .does_support_format = [](heif_compression_format) { return 1; },
                                           .new_decoder = newDecoder,
                                           .free_decoder = freeDecoder,
                                           .push_data = pushData,
                                           .decode_image = decodePicture,
                                           .set_strict_decoding = [](void*, int) {},
                                           .id_name = decoderName};
  static std::once_flag once;
  std::call_once(once, [] { heif_register_decoder_plugin(&decoder); });
}

template <auto release>
struct Releaser {
  template <class T>
  void operator()(T* object) const {
    release(object);
  }
};
using Context = std::unique_ptr<heif_context, Releaser<heif_context_free>>;
using Handle = std::unique_ptr<heif_image_handle, Releaser<heif_image_handle_release>>;
using Options = std::unique_ptr<heif_decoding_options, Releaser<heif_decoding_options_free>>;
using Picture = std::unique_ptr<heif_image, Releaser<heif_image_release>>;

/// Nothing when the file is damaged; throws when the picture is too large.
bool succeeded(const heif_error& error) {
  if (error.code == heif_error_Ok) return true;
  if (error.subcode == heif_suberror_Security_limit_exceeded)
    throw std::runtime_error("too large: more than " + std::to_string(longestSide) + " pixels wide or high");
  return false;
}

Handle mainPicture(heif_context* context, std::span<const std::uint8_t> file) {
  heif_context_set_maximum_image_size_limit(context, longestSide);
  // On this thread, whose pixels are counted.
  heif_context_set_max_decoding_threads(context, 0);
  heif_image_handle* handle = nullptr;
  if (!succeeded(heif_context_read_from_memory_without_copy(context, file.data(), file.size(), nullptr))) return {};
  if (!succeeded(heif_context_get_primary_image_handle(context, &handle))) return {};
  return Handle(handle);
}

}  // namespace

cv::Mat heicPixels(std::span<const std::uint8_t> file) {
  registerDecoder();
  const Context context(heif_context_alloc());
  const Handle handle = mainPicture(context.get(), file);
  if (!handle) return {};
  requirePictureSize(heif_image_handle_get_width(handle.get()), heif_image_handle_get_height(handle.get()));

  const Options options(heif_decoding_options_alloc());
  options->convert_hdr_to_8bit = 1;
  options->decoder_id = decoderName;
  codedPixelsLeft = mostCodedPixels;
  heif_image* decoded = nullptr;
  if (!succeeded(
          heif_decode_image(handle.get(), &decoded, heif_colorspace_RGB, heif_chroma_interleaved_RGBA, options.get())))
    return {};
  const Picture picture(decoded);
  int stride = 0;
  std::uint8_t* rgba = heif_image_get_plane(decoded, heif_channel_interleaved, &stride);
  const int width = heif_image_get_width(decoded, heif_channel_interleaved);
  const int height = heif_image_get_height(decoded, heif_channel_interleaved);
  requirePictureSize(width, height);
  cv::Mat pixels;
  cv::cvtColor(cv::Mat(height, width, CV_8UC4, rgba, static_cast<std::size_t>(stride)), pixels, cv::COLOR_RGBA2BGRA);
  return pixels;
}

}  // namespace pravik
