#pragma once
// One field of a decoded PDU: a value of one representation (or a translated value, a
// payload, or a list of sub-PDUs), without its label; labels come per PDU ID from
// PduNaming::PDUFieldNameProvider, in field order.

#include "cpdu_displayobject.h"
#include "pdutypes.h"

#include <QByteArray>
#include <cstdint>
#include <memory>
#include <vector>

class CPDU;

class CPDU_FieldContainer
{
public:
    /// The field class of a PDU's payload.
    static constexpr unsigned PayloadFieldClass = PDU_FIELDCLASS_PAYLOAD;

    ~CPDU_FieldContainer();
    CPDU_FieldContainer(CPDU_FieldContainer const&) = delete;
    CPDU_FieldContainer& operator=(CPDU_FieldContainer const&) = delete;

    static std::unique_ptr<CPDU_FieldContainer> unsignedValue(std::uint32_t value);
    static std::unique_ptr<CPDU_FieldContainer> signedValue(std::int32_t value);
    static std::unique_ptr<CPDU_FieldContainer> floatValue(float value);
    static std::unique_ptr<CPDU_FieldContainer> boolValue(bool value);
    /// Latin-1 characters, 8 bits each.
    static std::unique_ptr<CPDU_FieldContainer> stringValue(QByteArray const& latin1);
    /// A value whose text is PduNaming::PDUDataTranslator::dataIdToString(translation).
    static std::unique_ptr<CPDU_FieldContainer> translatedValue(unsigned translation);
    static std::unique_ptr<CPDU_FieldContainer> objectValue(ePDU_DATAREPRESENTATION representation,
                                                            std::unique_ptr<CPDU_DisplayObject> object);
    /// The PDU's payload: `bitCount` bits, the first in the most significant bit of the
    /// first byte, as 1-bit elements.
    static std::unique_ptr<CPDU_FieldContainer> payload(QByteArray const& bytes,
                                                        unsigned bitCount);
    /// A field that stands for PDUs of its own (CPDU_Converter::getSubPDUs).
    static std::unique_ptr<CPDU_FieldContainer> expandable(std::vector<std::unique_ptr<CPDU>> subPDUs);

    /// PDU_FIELDCLASS_PAYLOAD for the payload, else PDU_FIELDCLASS_VALUE.
    unsigned getFieldClass() const { return m_fieldClass; }
    ePDU_DATAREPRESENTATION getDataRepresentation() const { return m_representation; }
    /// Non-zero: the value is this translation ID, not the data.
    unsigned getDataTranslation() const { return m_translation; }
    /// The elements, null when there are none. For positions and date-times the elements are
    /// `CPDU_DisplayObject const*` pointers.
    unsigned* getData(unsigned& bitsPerElement, unsigned& elementCount) const;
    bool isExpandable() const { return m_expandable; }
    std::vector<std::unique_ptr<CPDU>> const& subPDUs() const { return m_subPDUs; }

    std::unique_ptr<CPDU_FieldContainer> clone() const;

private:
    CPDU_FieldContainer(unsigned fieldClass, ePDU_DATAREPRESENTATION representation);
    void setBytes(void const* bytes, std::size_t size, unsigned bits, unsigned count);

    unsigned m_fieldClass;
    ePDU_DATAREPRESENTATION m_representation;
    unsigned m_translation = 0;
    bool m_expandable = false;
    unsigned m_bits = 0;
    unsigned m_count = 0;
    mutable std::vector<unsigned> m_words; // element storage, whole words so that any width is aligned
    std::unique_ptr<CPDU_DisplayObject> m_object;
    std::vector<std::unique_ptr<CPDU>> m_subPDUs;
};
