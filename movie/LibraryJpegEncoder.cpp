// SPDX-License-Identifier: GPL-3.0-or-later
#include "movie/LibraryJpegEncoder.h"

#include "movie/ColourPlanes.h"
#include "movie/JpegArena.h"
#include "movie/JpegMarkers.h"
#include "movie/JpegTables.h"

#include <algorithm>
#include <array>
#include <csetjmp>
#include <cstdio>

#include <jerror.h>
#include <jpeglib.h>

namespace lumavex {

namespace {

constexpr std::size_t kFirstCapacity = 256 * 1024;

} // namespace

struct LibraryJpegEncoder::Library : JpegArena {
    jpeg_compress_struct compress{};
    jpeg_error_mgr errors{};
    jpeg_destination_mgr destination{};
    std::jmp_buf failed{};
    JpegBuffer* output = nullptr;
    ColourPlanes planes;
    bool usesPlanes = false;
    bool usable = false;

    static Library& of(void* client) { return static_cast<Library&>(*static_cast<JpegArena*>(client)); }

    // The library requires that this does not return.
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

    bool encodeRun(const CVPixelBuffer& pixels, MacroblockRows rows, JpegRows& jpeg);
    void writeRow(const CVPixelBuffer& pixels, int macroblockRow);
    void writePixels(const CVPixelBuffer& pixels, int macroblockRow);
};

// Encodes the rows as a picture of their own. The bounds become the positions from which to search for the rows'
// markers.
bool LibraryJpegEncoder::Library::encodeRun(const CVPixelBuffer& pixels, MacroblockRows rows, JpegRows& jpeg)
{
    output = &jpeg.buffer;
    const int top = rows.first * kMacroblockHeight;
    compress.image_width = static_cast<JDIMENSION>(pixels.width);
    compress.image_height = static_cast<JDIMENSION>(std::min(rows.count * kMacroblockHeight, pixels.height - top));
    // No object with a destructor may live in this function: an error returns here by longjmp().
    if (setjmp(failed) != 0) {
        jpeg_abort_compress(&compress);
        return false;
    }
    jpeg_start_compress(&compress, TRUE);
    for (int row = 0; row < rows.count; ++row) {
        writeRow(pixels, rows.first + row);
        jpeg.bounds[static_cast<std::size_t>(row) + 1] =
            static_cast<std::size_t>(destination.next_output_byte - output->data());
    }
    jpeg_finish_compress(&compress);
    return true;
}

void LibraryJpegEncoder::Library::writeRow(const CVPixelBuffer& pixels, int macroblockRow)
{
    if (!usesPlanes) {
        writePixels(pixels, macroblockRow);
        return;
    }
    planes.convert(pixels, macroblockRow);
    jpeg_write_raw_data(&compress, planes.planes(), kMacroblockHeight);
}

void LibraryJpegEncoder::Library::writePixels(const CVPixelBuffer& pixels, int macroblockRow)
{
    std::array<JSAMPROW, kMacroblockHeight> lines{};
    const int top = macroblockRow * kMacroblockHeight;
    const int count = std::min(kMacroblockHeight, pixels.height - top);
    for (int i = 0; i < count; ++i) {
        const std::ptrdiff_t offset = std::ptrdiff_t{pixels.bytesPerRow} * (top + i);
        lines[static_cast<std::size_t>(i)] = const_cast<JSAMPROW>(pixels.baseAddress + offset); // only read
    }
    jpeg_write_scanlines(&compress, lines.data(), static_cast<JDIMENSION>(count));
}

namespace {

// Makes a picture of some rows equal to these rows of the whole picture: its height and the numbers of its markers.
void fitIntoPicture(int pictureHeight, MacroblockRows rows, JpegRows& jpeg)
{
    const std::span bytes(jpeg.buffer.data(), jpeg.buffer.bytes().size());
    const std::size_t frame = findHeader(bytes, kStartOfFrame);
    bytes[frame + 5] = static_cast<std::uint8_t>(pictureHeight >> 8);
    bytes[frame + 6] = static_cast<std::uint8_t>(pictureHeight & 0xFF);
    jpeg.bounds.front() = rows.first == 0 ? 0 : headersOf(bytes).size();
    jpeg.bounds.back() = bytes.size();
    const int last = allMacroblockRows(pictureHeight).end() - 1;
    for (int k = 0; k < rows.count; ++k) {
        std::size_t& bound = jpeg.bounds[static_cast<std::size_t>(k) + 1];
        if (k + 1 < rows.count) {
            // The row's last bits and its marker are written with the next row's first bits. In a scan, 0xFF is
            // followed by zero unless it begins a marker.
            while (bytes[bound] != 0xFF || bytes[bound + 1] == 0)
                ++bound;
            bound += 2;
        }
        if (rows.first + k != last)
            bytes[bound - 1] = restartMarker(rows.first + k);
    }
}

} // namespace

LibraryJpegEncoder::LibraryJpegEncoder(Colours colours) : library_(std::make_unique<Library>())
{
    Library& library = *library_;
    library.compress.err = jpeg_std_error(&library.errors);
    library.errors.error_exit = Library::fail;
    library.errors.output_message = Library::beSilent;
    library.compress.client_data = static_cast<JpegArena*>(&library);
    if (setjmp(library.failed) != 0)
        return;
    jpeg_create_compress(&library.compress);
    library.serve(library.compress);
    library.destination.init_destination = Library::begin;
    library.destination.empty_output_buffer = Library::growOutput;
    library.destination.term_destination = Library::end;
    library.compress.dest = &library.destination;

    library.compress.in_color_space = JCS_EXT_ARGB;
    library.compress.input_components = 4;
    jpeg_set_defaults(&library.compress); // full-range JFIF colours, 4:2:0, the common Huffman codes
    setJpegTables(library.compress);
    library.usesPlanes = colours == Colours::Fastest && ColourPlanes::isFast();
    library.compress.raw_data_in = library.usesPlanes ? TRUE : FALSE;
    library.compress.dct_method = JDCT_ISLOW; // with vector instructions it is no slower than the others
    library.compress.optimize_coding = FALSE;
    library.compress.restart_in_rows = 1;
    library.usable = true;
}

LibraryJpegEncoder::~LibraryJpegEncoder()
{
    jpeg_destroy_compress(&library_->compress);
}

bool LibraryJpegEncoder::encode(const CVPixelBuffer& pixels, MacroblockRows rows, JpegRows& jpeg)
{
    jpeg.bounds.resize(static_cast<std::size_t>(rows.count) + 1);
    if (!library_->usable || (library_->usesPlanes && !library_->planes.prepare(pixels.width))
        || !library_->encodeRun(pixels, rows, jpeg))
        return false;
    fitIntoPicture(pixels.height, rows, jpeg);
    return true;
}

} // namespace lumavex
