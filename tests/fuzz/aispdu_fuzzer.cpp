// Arbitrary bytes as the record of an AIS PDU frame: decoded through the factory's converter
// and named as the transmission-system model names them; every field must render.
#include <cstdlib>
#include <pdu/cpdu_converter.h>
#include <pdu/pdunaming.h>

extern "C" int LLVMFuzzerTestOneInput(uint8_t const* data, size_t size)
{
    // A frame header and the fixed start of the record, then the fuzzer's words.
    QByteArray frame(52, '\0');
    quint32 const type = COMMSYS_AIS;
    frame += QByteArray(reinterpret_cast<char const*>(&type), 4);
    frame += QByteArray(reinterpret_cast<char const*>(data), int(size));
    CPDU_Converter* const converter =
        CPDU_Converter_Factory::getInstance()->getPDU_ConverterByCOMMSYSTYPE(COMMSYS_AIS);
    std::vector<CPDU*> pdus = converter->decodeFrame(frame);
    for (CPDU* pdu : pdus) {
        if (PduNaming::PDUIdTranslator::pduIdToString(pdu->getPDU_ID()).empty() ||
            PduNaming::PDUFieldNameProvider::getHeaders(pdu->getPDU_ID()).size() !=
                pdu->getFields().size()) {
            std::abort(); // every decoded field has its label
        }
        for (CPDU_FieldContainer* field : pdu->getFields()) {
            unsigned bits = 0;
            unsigned count = 0;
            unsigned const* const values = field->getData(bits, count);
            if (field->getDataTranslation() != 0) {
                if (PduNaming::PDUDataTranslator::dataIdToString(field->getDataTranslation()).empty()) {
                    std::abort(); // every translation has its text
                }
            } else if (field->isExpandable()) {
                std::vector<CPDU*> subs = converter->getSubPDUs(field);
                deletePDUs(subs);
            } else if (field->getDataRepresentation() == PDU_REPRESENTATION_POSITION ||
                       field->getDataRepresentation() == PDU_REPRESENTATION_DATETIME) {
                (*reinterpret_cast<CPDU_DisplayObject const* const*>(values))->toWString();
            }
        }
    }
    deletePDUs(pdus);
    return 0;
}
