// Placeholder bodies of the per-system processors so that the library links; each processor
// moves into a unit of its own.
#include "transmissionsystemmodel.h"

namespace zelkodatastreamconverter {

void TransmissionSystemModel::Process_ASCII(PDUDataBlock*, void*) {}
void TransmissionSystemModel::Process_UNICODE(PDUDataBlock*, void*) {}
void TransmissionSystemModel::Process_ATIS(PDUDataBlock*, void*) {}
void TransmissionSystemModel::Process_FMS_BOS(PDUDataBlock*, void*) {}
void TransmissionSystemModel::Process_ZVEI(PDUDataBlock*, void*) {}
void TransmissionSystemModel::Process_ZVEI_VDEW(PDUDataBlock*, void*) {}
void TransmissionSystemModel::Process_POCSAG(PDUDataBlock*, void*) {}
void TransmissionSystemModel::Process_PACKET_RADIO(PDUDataBlock*, void*) {}
void TransmissionSystemModel::Process_MPT1327(PDUDataBlock*, void*) {}
TransmissionSystemModel::PDUDataBlock* TransmissionSystemModel::Process_ACARS(PDUDataBlock*, void*)
{
    return nullptr;
}
void TransmissionSystemModel::Process_PACTOR(PDUDataBlock*, void*) {}
void TransmissionSystemModel::Process_CLOVER(PDUDataBlock*, void*) {}
TransmissionSystemModel::PDUDataBlock* TransmissionSystemModel::Process_F7W(PDUDataBlock* block,
                                                                            void*)
{
    return block;
}
QString TransmissionSystemModel::PACKET_RADIO_Address(void*)
{
    return QString();
}

} // namespace zelkodatastreamconverter
