#include "png_writer.h"

#include <png.h>

#include <cstdio>
#include <string>

#include "tool_error.h"

namespace cycbcr_tool {
namespace {

// What the callbacks share with encode_png(). libpng reports errors by
// jumping back to the setjmp() in write_png(), so no C++ object with a
// destructor may be alive in a frame it jumps over: the callbacks finish
// their own work (the vector's growth, which may throw) before calling
// png_error().
struct PngState {
    std::vector<uint8_t>* out;
    char message[256];
};

extern "C" void png_append(png_structp png, png_bytep data, size_t length) {
    auto* state = static_cast<PngState*>(png_get_io_ptr(png));
    bool grown = true;
    try {
        state->out->insert(state->out->end(), data, data + length);
    } catch (...) {
        grown = false;
    }
    if (!grown) png_error(png, "out of memory");
}

extern "C" void png_flush_nothing(png_structp) {}

extern "C" void png_fail(png_structp png, png_const_charp message) {
    auto* state = static_cast<PngState*>(png_get_error_ptr(png));
    std::snprintf(state->message, sizeof state->message, "%s", message);
    png_longjmp(png, 1);
}

extern "C" void png_ignore_warning(png_structp, png_const_charp) {}

// Only pointers and plain values live here between setjmp() and a jump back.
bool write_png(PngState* state, uint32_t width, uint32_t height, png_bytep const* rows) {
    png_structp png =
        png_create_write_struct(PNG_LIBPNG_VER_STRING, state, png_fail, png_ignore_warning);
    if (png == nullptr) {
        std::snprintf(state->message, sizeof state->message, "cannot start libpng");
        return false;
    }
    png_infop info = png_create_info_struct(png);
    if (info == nullptr) {
        png_destroy_write_struct(&png, nullptr);
        std::snprintf(state->message, sizeof state->message, "out of memory");
        return false;
    }
    if (setjmp(png_jmpbuf(png))) {
        png_destroy_write_struct(&png, &info);
        return false;
    }
    png_set_write_fn(png, state, png_append, png_flush_nothing);
    png_set_IHDR(png, info, width, height, 8, PNG_COLOR_TYPE_RGB, PNG_INTERLACE_NONE,
                 PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    png_write_info(png, info);
    png_write_image(png, const_cast<png_bytepp>(rows));
    png_write_end(png, info);
    png_destroy_write_struct(&png, &info);
    return true;
}

}  // namespace

std::vector<uint8_t> encode_png(uint32_t width, uint32_t height, std::span<const uint8_t> rgb) {
    if (rgb.size() != size_t{width} * 3 * height) throw ToolError("PNG: wrong picture size");
    std::vector<png_bytep> rows(height);
    for (uint32_t r = 0; r < height; ++r) {
        rows[r] = const_cast<png_bytep>(rgb.data() + size_t{r} * width * 3);
    }
    std::vector<uint8_t> out;
    PngState state{&out, {}};
    if (!write_png(&state, width, height, rows.data())) {
        throw ToolError(std::string("cannot write the PNG: ") + state.message);
    }
    return out;
}

}  // namespace cycbcr_tool
