#include "common/jpeg_file.h"

#include <csetjmp>
#include <cstdio>

#include <jerror.h>
#include <jpeglib.h>

#include "common/error.h"

namespace examples {
namespace {

// libjpeg reports a failure by a call that must not return: it jumps back into attempt().
struct Failure {
  jpeg_error_mgr manager;  // first, so that libjpeg's pointer to it leads here
  std::jmp_buf back;
  char message[JMSG_LENGTH_MAX];
};

[[noreturn]] void jumpBack(j_common_ptr info) {
  auto* failure = reinterpret_cast<Failure*>(info->err);
  info->err->format_message(info, failure->message);
  std::longjmp(failure->back, 1);
}

// Warnings tell of missing or wrong data, which libjpeg would fill with grey. Stray bytes between markers do no harm.
void onMessage(j_common_ptr info, int level) {
  if (level < 0 && info->err->msg_code != JWRN_EXTRANEOUS_DATA) jumpBack(info);
}

class Decoder {
 public:
  explicit Decoder(const std::string& name) : name_(name) {
    info_.err = jpeg_std_error(&failure_.manager);
    info_.err->error_exit = jumpBack;
    info_.err->emit_message = onMessage;
    attempt([&] { jpeg_create_decompress(&info_); });
  }
  ~Decoder() { jpeg_destroy_decompress(&info_); }
  Decoder(const Decoder&) = delete;
  Decoder& operator=(const Decoder&) = delete;

  ColourImage decode(const Bytes& bytes) {
    attempt([&] { jpeg_mem_src(&info_, bytes.data(), bytes.size()); });
    attempt([&] { jpeg_read_header(&info_, TRUE); });
    if (int64_t{info_.image_width} * info_.image_height > kMaxPixels)
      throw Error(name_ + ": the JPEG has too many pixels");
    info_.out_color_space = JCS_RGB;
    attempt([&] { jpeg_start_decompress(&info_); });
    ColourImage result(int(info_.output_width), int(info_.output_height));
    while (info_.output_scanline < info_.output_height) {
      JSAMPROW row = result.row(int(info_.output_scanline));
      attempt([&] { jpeg_read_scanlines(&info_, &row, 1); });
    }
    attempt([&] { jpeg_finish_decompress(&info_); });
    return result;
  }

 private:
  // Runs one step of libjpeg. The step must own nothing, since a jump leaves it without running destructors.
  template <class Step>
  void attempt(Step step) {
    if (setjmp(failure_.back) == 0) {
      step();
    } else {
      throw Error(name_ + ": malformed or unsupported JPEG: " + failure_.message);
    }
  }

  const std::string& name_;
  Failure failure_{};
  jpeg_decompress_struct info_{};
};

}  // namespace

bool isJpeg(const Bytes& bytes) {
  return bytes.size() >= 3 && bytes[0] == 0xff && bytes[1] == 0xd8 && bytes[2] == 0xff;
}

ColourImage decodeJpeg(const Bytes& bytes, const std::string& name) { return Decoder(name).decode(bytes); }

}  // namespace examples
