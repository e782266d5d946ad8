#include "sampledocument.h"

using namespace NerikResultDataXml;

namespace sample {

QDateTime at(int hour, int minute, int second, int millisecond)
{
    return QDateTime(QDate(2024, 1, 31), QTime(hour, minute, second, millisecond), Qt::UTC);
}

std::unique_ptr<NerikResultData> richDocument(QString const& text)
{
    auto const pick = [&text](char const* normal) {
        return text.isNull() ? QString::fromUtf8(normal) : text;
    };
    auto document = std::make_unique<NerikResultData>();

    auto* first = new Transmission;
    first->SetStartTime(at(23, 59, 58, 1));
    first->SetStopTime(at(23, 59, 59, 999));
    auto* info = new Info(at(23, 59, 58, 1));
    info->SetItem(pick("Tuner_Settings"), pick("<Tuner_Settings device=\"EB500\"/>"));
    info->SetItem(QStringLiteral("Demodulator_Settings"), QString());
    first->AddInfo(info);

    auto* text3 = new DataBlock(3, 0, 0);
    text3->SetID(document->GetNextID());
    text3->SetContentCode(pick("ITA2"));
    text3->SetRawContentType(DataBlock::sRawData_DecodedText);
    text3->SetTimeStamp(at(23, 59, 58, 1));
    text3->BeginFrame();
    text3->AppendRawData(pick("RYRY"));
    text3->AppendData(pick("RYRY"));
    text3->EndFrame();
    text3->SetTimeStamp(at(23, 59, 59, 500));
    text3->BeginFrame();
    text3->AppendRawData(QChar(0x001B));
    text3->AppendData(pick(" CQ CQ\r\n"));
    text3->EndFrame();
    text3->AddUserData(
        new UserData(0, 4, UserData::ChangeType, pick("TEST"), QString(), pick("RYRY")));
    text3->AddUserData(
        new UserData(2, 6, UserData::CommentType, pick("a remark"), pick("second"), QString()));
    first->AddDataBlock(text3);

    auto* rtl = new DataBlock(7, 12, 24);
    rtl->SetID(document->GetNextID());
    rtl->SetContentDirectionRTL(true);
    rtl->SetContent(QString::fromUtf8("\u05E9\u05DC\u05D5\u05DD \u200F123"));
    first->AddDataBlock(rtl);

    auto* parent = new PDUDataBlock;
    parent->SetID(document->GetNextID());
    parent->SetType(9u << 16);
    parent->SetTimeStamp(at(23, 59, 59, 0));
    parent->SetName(pick("ACARS"));
    parent->SetMethod(pick("ACARS"));
    parent->SetCRC(pick("ok"));
    parent->AddField(Field(pick("Mode"), QStringLiteral("string"), pick("2")));
    parent->AddField(Field(QStringLiteral("Label"), pick("string"), QString()));
    Payload payload;
    payload.SetName(pick("Message"));
    payload.SetContent(pick("HELLO"));
    payload.SetContentCode(pick("International"));
    payload.SetData(QByteArray("\x01\x00\xFF\x7F", 4), 32, 1);
    parent->SetPayload(payload);
    parent->AddUserData(new UserData(1, 3, pick("Comment"), pick("x")));
    auto* child = new PDUDataBlock;
    child->SetID(document->GetNextID());
    child->SetType(0);
    child->SetTimeStamp(at(23, 59, 59, 0));
    child->SetName(pick("ACARS continuation"));
    auto* grandChild = new PDUDataBlock;
    grandChild->SetID(document->GetNextID());
    grandChild->SetType(0xFFFFFFFFu);
    grandChild->SetTimeStamp(at(23, 59, 59, 1));
    grandChild->AddField(Field(QStringLiteral("?"), QStringLiteral("bitlist"), pick("0101")));
    child->AddPDUDataBlock(grandChild);
    parent->AddPDUDataBlock(child);
    first->AddPDUDataBlock(parent);
    document->AddTransmission(first);

    auto* second = new Transmission;
    second->SetStartTime(at(0, 0, 1));
    auto* ais = new PDUDataBlock;
    ais->SetID(document->GetNextID());
    ais->SetType(1);
    ais->SetTimeStamp(at(0, 0, 1, 123));
    ais->SetName(QStringLiteral("AIS Position Report"));
    ais->AddField(
        Field(QStringLiteral("MMSI"), QStringLiteral("int"), QStringLiteral("211234567")));
    ais->AddField(Field(QStringLiteral("Position"), QStringLiteral("position"),
                        QString::fromUtf8("N 53\u00B032'10.5'' E 9\u00B058'0''")));
    second->AddPDUDataBlock(ais);
    document->AddTransmission(second);
    // A transmission with nothing but times, and one with nothing at all.
    auto* bare = new Transmission;
    bare->SetStartTime(at(0, 0, 2));
    bare->SetStopTime(at(0, 0, 2));
    document->AddTransmission(bare);
    document->AddTransmission(new Transmission);
    return document;
}

} // namespace sample
