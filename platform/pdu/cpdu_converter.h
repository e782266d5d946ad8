#pragma once
// A decoder of one communication system's PDU frames, and the factory that hands them out by
// communication-system type (the first word of a PDU frame's record).

#include "cpdu.h"
#include "pdutypes.h"

#include <QByteArray>
#include <map>
#include <memory>
#include <vector>

class CPDU_Converter
{
public:
    virtual ~CPDU_Converter();
    /// The PDUs an expandable field stands for, as new objects the caller deletes (deletePDUs);
    /// empty for a field that is not expandable.
    virtual std::vector<CPDU*> getSubPDUs(CPDU_FieldContainer* field);
    /// The PDUs of one whole frame (header included; words in host order), as new objects the
    /// caller deletes (deletePDUs). A damaged frame gives what could be read, or nothing.
    virtual std::vector<CPDU*> decodeFrame(QByteArray const& frame) = 0;
};

class CPDU_Converter_Factory
{
public:
    static CPDU_Converter_Factory* getInstance();
    /// The converter for a communication-system type (eCOMMSYSTYPE), owned by the factory;
    /// null for a type the library does not know.
    CPDU_Converter* getPDU_ConverterByCOMMSYSTYPE(unsigned type) const;
    /// Adds (or replaces) the decoder of a communication system, for systems a host decodes
    /// itself. Not thread-safe: add converters before conversions start.
    void addConverter(unsigned type, std::unique_ptr<CPDU_Converter> converter);

private:
    CPDU_Converter_Factory();
    std::map<unsigned, std::unique_ptr<CPDU_Converter>> m_converters;
};
