#pragma once
// The AIS decoder of the PDU library: a frame's record (from frame position 52) is
//   word 0  communication-system type, COMMSYS_AIS (1)
//   word 1  radio channel as an ASCII letter ('A', 'B'), 0 when unknown
//   word 2  checksum state (ePDU_CHECKSUM_STATE) of the received message
//   word 3  message length n in bits
//   word 4… the message, ceil(n / 32) words; message bit i is bit 31 - i % 32 of word i / 32
// and gives one PDU, stamped with the frame's time, named and labelled by ais::MessageLayout.

#include "cpdu_converter.h"

class AisPduConverter : public CPDU_Converter
{
public:
    static constexpr int RecordPosition = 52;
    static constexpr unsigned MaxMessageBits = 1008; // five slots

    std::vector<CPDU*> decodeFrame(QByteArray const& frame) override;

    /// The PDU of one message, as getPDUs builds it.
    static std::unique_ptr<CPDU> decodeMessage(QByteArray const& message, unsigned bitCount,
                                               unsigned long long timeStamp,
                                               ePDU_CHECKSUM_STATE checkSumState);
};
