// Runs a fuzz target's entry point on the files and directories named on the command line,
// so that the ordinary test suite replays the seed corpus and every regression input
// without libFuzzer.
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <cstdint>
#include <cstdio>

extern "C" int LLVMFuzzerTestOneInput(uint8_t const* data, size_t size);
extern "C" __attribute__((weak)) int LLVMFuzzerInitialize(int* argc, char*** argv);

namespace {

bool replay(QString const& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        std::fprintf(stderr, "cannot read %s\n", qPrintable(path));
        return false;
    }
    QByteArray const bytes = file.readAll();
    std::fprintf(stderr, "replaying %s (%d bytes)\n", qPrintable(path), bytes.size());
    LLVMFuzzerTestOneInput(reinterpret_cast<uint8_t const*>(bytes.constData()), size_t(bytes.size()));
    return true;
}

} // namespace

int main(int argc, char** argv)
{
    if (LLVMFuzzerInitialize) {
        LLVMFuzzerInitialize(&argc, &argv);
    }
    int inputs = 0;
    bool ok = true;
    for (int i = 1; i < argc; ++i) {
        QString const path = QString::fromLocal8Bit(argv[i]);
        if (QFileInfo(path).isDir()) {
            QDirIterator files(path, QDir::Files, QDirIterator::Subdirectories);
            while (files.hasNext()) {
                ok = replay(files.next()) && ok;
                ++inputs;
            }
        } else {
            ok = replay(path) && ok;
            ++inputs;
        }
    }
    std::fprintf(stderr, "%d inputs replayed\n", inputs);
    return ok && inputs > 0 ? 0 : 1;
}
