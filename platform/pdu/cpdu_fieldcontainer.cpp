#include "cpdu_fieldcontainer.h"

#include "cpdu.h"

#include <cstring>

CPDU_FieldContainer::CPDU_FieldContainer(unsigned fieldClass,
                                         ePDU_DATAREPRESENTATION representation)
    : m_fieldClass(fieldClass), m_representation(representation)
{
}

CPDU_FieldContainer::~CPDU_FieldContainer() = default;

void CPDU_FieldContainer::setBytes(void const* bytes, std::size_t size, unsigned bits,
                                   unsigned count)
{
    m_words.assign((size + sizeof(unsigned) - 1) / sizeof(unsigned), 0u);
    if (size > 0) {
        std::memcpy(m_words.data(), bytes, size);
    }
    m_bits = bits;
    m_count = count;
}

std::unique_ptr<CPDU_FieldContainer> CPDU_FieldContainer::unsignedValue(std::uint32_t value)
{
    std::unique_ptr<CPDU_FieldContainer> field(
        new CPDU_FieldContainer(PDU_FIELDCLASS_VALUE, PDU_REPRESENTATION_UNSIGNED));
    field->setBytes(&value, sizeof value, 32, 1);
    return field;
}

std::unique_ptr<CPDU_FieldContainer> CPDU_FieldContainer::signedValue(std::int32_t value)
{
    std::unique_ptr<CPDU_FieldContainer> field(
        new CPDU_FieldContainer(PDU_FIELDCLASS_VALUE, PDU_REPRESENTATION_SIGNED));
    field->setBytes(&value, sizeof value, 32, 1);
    return field;
}

std::unique_ptr<CPDU_FieldContainer> CPDU_FieldContainer::floatValue(float value)
{
    std::unique_ptr<CPDU_FieldContainer> field(
        new CPDU_FieldContainer(PDU_FIELDCLASS_VALUE, PDU_REPRESENTATION_FLOAT));
    field->setBytes(&value, sizeof value, 32, 1);
    return field;
}

std::unique_ptr<CPDU_FieldContainer> CPDU_FieldContainer::boolValue(bool value)
{
    std::unique_ptr<CPDU_FieldContainer> field(
        new CPDU_FieldContainer(PDU_FIELDCLASS_VALUE, PDU_REPRESENTATION_BOOL));
    unsigned char const byte = value ? 1 : 0;
    field->setBytes(&byte, 1, 8, 1);
    return field;
}

std::unique_ptr<CPDU_FieldContainer> CPDU_FieldContainer::stringValue(QByteArray const& latin1)
{
    std::unique_ptr<CPDU_FieldContainer> field(
        new CPDU_FieldContainer(PDU_FIELDCLASS_VALUE, PDU_REPRESENTATION_STRING));
    field->setBytes(latin1.constData(), std::size_t(latin1.size()), 8, unsigned(latin1.size()));
    return field;
}

std::unique_ptr<CPDU_FieldContainer> CPDU_FieldContainer::translatedValue(unsigned translation)
{
    std::unique_ptr<CPDU_FieldContainer> field(
        new CPDU_FieldContainer(PDU_FIELDCLASS_VALUE, PDU_REPRESENTATION_STRING));
    field->m_translation = translation;
    return field;
}

std::unique_ptr<CPDU_FieldContainer>
CPDU_FieldContainer::objectValue(ePDU_DATAREPRESENTATION representation,
                                 std::unique_ptr<CPDU_DisplayObject> object)
{
    std::unique_ptr<CPDU_FieldContainer> field(
        new CPDU_FieldContainer(PDU_FIELDCLASS_VALUE, representation));
    CPDU_DisplayObject const* const pointer = object.get();
    field->setBytes(&pointer, sizeof pointer, unsigned(8 * sizeof pointer), 1);
    field->m_object = std::move(object);
    return field;
}

std::unique_ptr<CPDU_FieldContainer> CPDU_FieldContainer::payload(QByteArray const& bytes,
                                                                  unsigned bitCount)
{
    std::unique_ptr<CPDU_FieldContainer> field(
        new CPDU_FieldContainer(PDU_FIELDCLASS_PAYLOAD, PDU_REPRESENTATION_BINARY));
    field->setBytes(bytes.constData(), std::size_t(bytes.size()), 1, bitCount);
    return field;
}

std::unique_ptr<CPDU_FieldContainer>
CPDU_FieldContainer::expandable(std::vector<std::unique_ptr<CPDU>> subPDUs)
{
    std::unique_ptr<CPDU_FieldContainer> field(
        new CPDU_FieldContainer(PDU_FIELDCLASS_VALUE, PDU_REPRESENTATION_BINARY));
    field->m_expandable = true;
    field->m_subPDUs = std::move(subPDUs);
    return field;
}

unsigned* CPDU_FieldContainer::getData(unsigned& bitsPerElement, unsigned& elementCount) const
{
    bitsPerElement = m_bits;
    elementCount = m_count;
    return m_words.empty() ? nullptr : m_words.data();
}

std::unique_ptr<CPDU_FieldContainer> CPDU_FieldContainer::clone() const
{
    if (m_object) {
        return objectValue(m_representation, m_object->clone());
    }
    std::unique_ptr<CPDU_FieldContainer> copy(
        new CPDU_FieldContainer(m_fieldClass, m_representation));
    copy->m_translation = m_translation;
    copy->m_expandable = m_expandable;
    copy->m_bits = m_bits;
    copy->m_count = m_count;
    copy->m_words = m_words;
    for (auto const& sub : m_subPDUs) {
        copy->m_subPDUs.push_back(sub->clone());
    }
    return copy;
}
