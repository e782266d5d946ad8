#include "cpdu_converter.h"

#include "aispduconverter.h"

CPDU_Converter::~CPDU_Converter() = default;

std::vector<CPDU*> CPDU_Converter::getSubPDUs(CPDU_FieldContainer* field)
{
    std::vector<CPDU*> copies;
    if (!field) {
        return copies;
    }
    for (auto const& sub : field->subPDUs()) {
        copies.push_back(sub->clone().release());
    }
    return copies;
}

CPDU_Converter_Factory::CPDU_Converter_Factory()
{
    // One decoder per communication system; a new system is one more line here.
    m_converters.emplace(COMMSYS_AIS, std::make_unique<AisPduConverter>());
}

CPDU_Converter_Factory* CPDU_Converter_Factory::getInstance()
{
    static CPDU_Converter_Factory instance;
    return &instance;
}

CPDU_Converter* CPDU_Converter_Factory::getPDU_ConverterByCOMMSYSTYPE(unsigned type) const
{
    auto const found = m_converters.find(type);
    return found == m_converters.end() ? nullptr : found->second.get();
}

void CPDU_Converter_Factory::addConverter(unsigned type, std::unique_ptr<CPDU_Converter> converter)
{
    m_converters[type] = std::move(converter);
}
