// SPDX-License-Identifier: GPL-3.0-or-later
// Runs a fuzz target over files: each as it is, cut off at every length and with every byte changed in turn, as far as
// the limits below. What the fuzzer found once is found again by any compiler.
#include "tests/fuzz/Fuzzing.h"

#include <QCoreApplication>
#include <QDirIterator>
#include <QFile>

#include <algorithm>
#include <vector>

namespace {

/// How many cuts and how many changed bytes of one file are tried, spread over it.
constexpr qsizetype kMostVariants = 256;

void run(const QByteArray& bytes)
{
    // A copy on the heap that ends where the input does: an address sanitizer then sees a read past the end.
    const std::vector<std::uint8_t> exact(bytes.begin(), bytes.end());
    LLVMFuzzerTestOneInput(exact.data(), exact.size());
}

void runVariants(const QByteArray& bytes)
{
    const qsizetype step = std::max<qsizetype>(1, bytes.size() / kMostVariants);
    for (qsizetype i = 0; i < bytes.size(); i += step) {
        run(bytes.first(i));
        for (const char value : {'\x00', '\x7f', '\xff'}) {
            QByteArray changed = bytes;
            changed[i] = value;
            run(changed);
        }
    }
}

} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    int files = 0;
    for (const QString& folder : application.arguments().sliced(1)) {
        QDirIterator each(folder, QDir::Files, QDirIterator::Subdirectories);
        while (each.hasNext()) {
            QFile file(each.next());
            lumavex::require(file.open(QIODevice::ReadOnly), "an input can be read");
            const QByteArray bytes = file.readAll();
            std::printf("%s\n", qPrintable(file.fileName()));
            std::fflush(stdout);
            run(bytes);
            runVariants(bytes);
            ++files;
        }
    }
    return files > 0 ? 0 : 1;
}
