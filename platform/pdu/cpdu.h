#pragma once
// One decoded protocol data unit: its ID (which names it and its field labels through
// PduNaming), time stamp, checksum state and fields. A CPDU owns its field containers; the
// vectors of CPDU* that a converter returns are the caller's to delete.

#include "cpdu_fieldcontainer.h"
#include "pdutypes.h"

#include <memory>
#include <vector>

class CPDU
{
public:
    CPDU(unsigned pduID, unsigned long long timeStamp,
         ePDU_CHECKSUM_STATE checkSumState = PDU_CHECKSUM_NONE);
    ~CPDU();
    CPDU(CPDU const&) = delete;
    CPDU& operator=(CPDU const&) = delete;

    unsigned getPDU_ID() const { return m_id; }
    ePDU_CHECKSUM_STATE getCheckSumState() const { return m_checkSumState; }
    /// Microseconds since 1970-01-01 00:00 UTC.
    unsigned long long getTimeStamp() const { return m_timeStamp; }
    /// The fields in label order; they belong to this PDU.
    std::vector<CPDU_FieldContainer*> const& getFields() const { return m_fieldView; }

    void addField(std::unique_ptr<CPDU_FieldContainer> field);
    std::unique_ptr<CPDU> clone() const;

private:
    unsigned m_id;
    unsigned long long m_timeStamp;
    ePDU_CHECKSUM_STATE m_checkSumState;
    std::vector<std::unique_ptr<CPDU_FieldContainer>> m_fields;
    std::vector<CPDU_FieldContainer*> m_fieldView;
};

/// Deletes the PDUs of a vector that a converter returned, and empties it.
void deletePDUs(std::vector<CPDU*>& pdus);
