#include <massdatamanagement/zelkodatastreamconverter/fileinfolist.h>
#include <massdatamanagement/zelkodatastreamconverter/filereader.h>

#include <diagnostics/errorhandler.h>
#include <reportkit/results.h>

#include <cstdio>

int main(int argc, char* argv[])
{
    if (argc != 2) {
        return 2;
    }
    ErrorHandler::Instance().setTraceLevelMask(0);
    zelkodatastreamconverter::FileReader reader(QString::fromLocal8Bit(argv[1]));
    QByteArray type;
    QByteArray frame;
    int frames = 0;
    while (reader.isWorking()) {
        if (reader.readFrame()) {
            reader.takeFrameData(type, frame);
            ++frames;
        }
    }
    zelkodatastreamconverter::FileInfoList list;
    std::printf("frames %d, results empty %d\n", frames, int(list.getResults().IsEmpty()));
    return 0;
}
