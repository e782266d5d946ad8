// Arbitrary bytes as the burst list's binary dump files (frames and bursts), read back as
// the dump readers do after a crash or a full disk.
#include <QTemporaryFile>
#include <massdatamanagement/zelkodatastreamconverter/burstemissionlist/burstemissionlistconverter.h>

using zelkodatastreamconverter::BurstEmissionList::BurstEmissionListConverter;

extern "C" int LLVMFuzzerTestOneInput(uint8_t const* data, size_t size)
{
    static QTemporaryFile dump;
    if (!dump.isOpen() && !dump.open()) {
        return 0;
    }
    dump.resize(0);
    dump.seek(0);
    dump.write(reinterpret_cast<char const*>(data), qint64(size));
    dump.flush();
    BurstEmissionListConverter::parseBinaryFrameDataFile(dump.fileName());
    BurstEmissionListConverter::parseBinaryBurstData(dump.fileName());
    return 0;
}
