// ACARS: one block of an aircraft's data-link message. A long message comes in several
// blocks; all but the last end in ETB (last-block flag clear). The first block of such a
// message puts a parent block into the transmission, and it and the blocks that follow
// become the parent's children, so the message reads as one unit.
#include "recordwords.h"

#include <nerikresultdataxml/pdudatablock.h>
#include <nerikresultdataxml/transmission.h>

namespace zelkodatastreamconverter {

TransmissionSystemModel::PDUDataBlock* TransmissionSystemModel::Process_ACARS(PDUDataBlock* block,
                                                                              void* record)
{
    if (record == nullptr) {
        return nullptr;
    }
    RecordWords const words(record, WordsAvailable(record, 0));
    PDUDataBlock* parent = nullptr;
    Transmission* const transmission = getCurrentTransmission();
    if (m_continuationPending && transmission != nullptr &&
        !transmission->GetPDUDataBlocks().isEmpty() &&
        transmission->GetPDUDataBlocks().last()->GetType() == block->GetType()) {
        parent = transmission->GetPDUDataBlocks().last();
        // The frame's first block is then the parent, which stands before it.
        --m_pduOffset;
    }

    SetCRC(block, words.at(0) != 0);
    AddField(block, tr("Category of Operation"), words.text(1, 1));
    AddField(block, tr("Aircraft"), words.text(2, 2));
    AddField(block, tr("Link Type"), words.text(4, 1));
    AddField(block, tr("Technical Acknowledgement"), words.text(5, 1));
    AddField(block, tr("Label"), words.text(6, 1));
    AddField(block, tr("Block ID"), words.text(7, 1));

    if (words.at(8) != 0) {
        m_continuationPending = false;
    } else if (parent == nullptr) {
        PDUDataBlock* const begun =
            BeginBlock(block->GetType(), block->GetTimeStamp(), block->GetName());
        // A block without a name is not kept (EndBlock deletes it); the message's blocks
        // then stand on their own.
        bool const kept = begun->IsValid();
        EndBlock(begun, nullptr, block->GetTimeStamp());
        if (kept) {
            parent = begun;
            m_continuationPending = true;
        }
    }
    unsigned const count = qMin(words.at(9), words.available(10));
    SetPackedASCIIPayload(block, tr("Message"), count, words.words(10));
    return parent;
}

} // namespace zelkodatastreamconverter
