#include "cpdu.h"

CPDU::CPDU(unsigned pduID, unsigned long long timeStamp, ePDU_CHECKSUM_STATE checkSumState)
    : m_id(pduID), m_timeStamp(timeStamp), m_checkSumState(checkSumState)
{
}

CPDU::~CPDU() = default;

void CPDU::addField(std::unique_ptr<CPDU_FieldContainer> field)
{
    m_fieldView.push_back(field.get());
    m_fields.push_back(std::move(field));
}

std::unique_ptr<CPDU> CPDU::clone() const
{
    auto copy = std::make_unique<CPDU>(m_id, m_timeStamp, m_checkSumState);
    for (auto const& field : m_fields) {
        copy->addField(field->clone());
    }
    return copy;
}

void deletePDUs(std::vector<CPDU*>& pdus)
{
    for (CPDU* pdu : pdus) {
        delete pdu;
    }
    pdus.clear();
}
