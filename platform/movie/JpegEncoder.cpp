// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/movie/JpegEncoder.h"

#include <algorithm>
#include <array>
#include <csetjmp>
#include <cstdio>

#include <jerror.h>
#include <jpeglib.h>

namespace lumavex {

namespace {

// ISO/IEC 11172-2, the default matrix of intra pictures, row by row. At 3/8 it is a sixth smaller than the common JPEG
// matrix at equal likeness on screen contents.
constexpr std::array<unsigned int, DCTSIZE2> kIntraMatrix = {
    8,  16, 19, 22, 26, 27, 29, 34, //
    16, 16, 22, 24, 27, 29, 34, 37, //
    19, 22, 26, 27, 29, 34, 34, 38, //
    22, 22, 26, 27, 29, 34, 37, 40, //
    22, 26, 27, 29, 32, 35, 40, 48, //
    26, 27, 29, 32, 35, 40, 48, 58, //
    26, 27, 29, 34, 38, 46, 56, 69, //
    27, 29, 35, 38, 46, 56, 69, 83,
};
constexpr unsigned int kQuantiserScale = 3; // in eighths
// The mean of a block is kept to one grey level, scale or not: coarser steps show as bands in even areas.
constexpr unsigned int kMeanStep = 8;

constexpr std::size_t kFirstCapacity = 256 * 1024;
constexpr JDIMENSION kRowsAtOnce = 16;

} // namespace

struct JpegEncoder::Library {
    jpeg_compress_struct compress{};
    jpeg_error_mgr errors{};
    jpeg_destination_mgr destination{};
    std::jmp_buf failed{};
    JpegBuffer* output = nullptr;
    bool usable = false;

    static Library& of(void* client) { return *static_cast<Library*>(client); }

    // The library must not return from here.
    [[noreturn]] static void fail(j_common_ptr common) { std::longjmp(of(common->client_data).failed, 1); }
    static void beSilent(j_common_ptr) {}

    static void begin(j_compress_ptr compress)
    {
        Library& self = of(compress->client_data);
        if (!self.output->grow(kFirstCapacity))
            ERREXIT1(compress, JERR_OUT_OF_MEMORY, 0);
        self.destination.next_output_byte = self.output->data();
        self.destination.free_in_buffer = self.output->capacity();
    }
    static boolean growOutput(j_compress_ptr compress)
    {
        Library& self = of(compress->client_data);
        const std::size_t used = self.output->capacity();
        if (!self.output->grow(used * 2))
            ERREXIT1(compress, JERR_OUT_OF_MEMORY, 0);
        self.destination.next_output_byte = self.output->data() + used;
        self.destination.free_in_buffer = self.output->capacity() - used;
        return TRUE;
    }
    static void end(j_compress_ptr compress)
    {
        Library& self = of(compress->client_data);
        self.output->setSize(self.output->capacity() - self.destination.free_in_buffer);
    }
};

JpegEncoder::JpegEncoder() : library_(std::make_unique<Library>())
{
    Library& library = *library_;
    library.compress.err = jpeg_std_error(&library.errors);
    library.errors.error_exit = Library::fail;
    library.errors.output_message = Library::beSilent;
    library.compress.client_data = &library;
    if (setjmp(library.failed) != 0)
        return;
    jpeg_create_compress(&library.compress);
    library.destination.init_destination = Library::begin;
    library.destination.empty_output_buffer = Library::growOutput;
    library.destination.term_destination = Library::end;
    library.compress.dest = &library.destination;

    library.compress.in_color_space = JCS_EXT_ARGB;
    library.compress.input_components = 4;
    jpeg_set_defaults(&library.compress); // full-range JFIF colours, 4:2:0, the common Huffman codes
    std::array<unsigned int, DCTSIZE2> steps = kIntraMatrix;
    for (unsigned int& step : steps)
        step = step * kQuantiserScale / 8;
    steps[0] = kMeanStep;
    jpeg_add_quant_table(&library.compress, 0, steps.data(), 100, TRUE);
    jpeg_add_quant_table(&library.compress, 1, steps.data(), 100, TRUE);
    library.compress.dct_method = JDCT_ISLOW;
    library.compress.optimize_coding = FALSE;
    library.compress.restart_in_rows = 1;
    library.usable = true;
}

JpegEncoder::~JpegEncoder()
{
    jpeg_destroy_compress(&library_->compress);
}

bool JpegEncoder::encode(const CVPixelBuffer& pixels, JpegBuffer& jpeg)
{
    Library& library = *library_;
    if (!library.usable)
        return false;
    jpeg_compress_struct& compress = library.compress;
    library.output = &jpeg;
    compress.image_width = static_cast<JDIMENSION>(pixels.width);
    compress.image_height = static_cast<JDIMENSION>(pixels.height);
    // Nothing with a destructor may live in this function: an error comes back here by a jump.
    if (setjmp(library.failed) != 0) {
        jpeg_abort_compress(&compress);
        return false;
    }
    jpeg_start_compress(&compress, TRUE);
    std::array<JSAMPROW, kRowsAtOnce> rows{};
    while (compress.next_scanline < compress.image_height) {
        const JDIMENSION count = std::min(kRowsAtOnce, compress.image_height - compress.next_scanline);
        for (JDIMENSION i = 0; i < count; ++i) {
            const auto offset =
                std::ptrdiff_t{pixels.bytesPerRow} * static_cast<std::ptrdiff_t>(compress.next_scanline + i);
            rows[i] = const_cast<JSAMPROW>(pixels.baseAddress + offset); // only read
        }
        jpeg_write_scanlines(&compress, rows.data(), count);
    }
    jpeg_finish_compress(&compress);
    return true;
}

} // namespace lumavex
