#pragma once

#include "valuelist.h"

#include <reportkit/frequency.h>

namespace JobSpec {

/// How the signal of a job is demodulated and decoded: the demodulation mode, the
/// demodulation bandwidth in hertz (0 = not given), the decoders, the alphabet and the
/// transmission-system mode text (for example "AIS").
///
/// XML form:
///   <Demodulator_Settings mode="USB" bandwidth="2700" alphabet="International"
///                         transmissionSystem="AIS">
///     <Decoder><Value>ITA2</Value></Decoder>
///   </Demodulator_Settings>
/// Every attribute and the Decoder child are optional; mode is one of the names of
/// ModeToName() (case-sensitive), bandwidth a non-negative number.
class Demodulator_Settings : public REPORTKIT::XmlElementObject
{
public:
    enum Mode
    {
        Unknown = 0,
        AM,
        FM,
        PM,
        USB,
        LSB,
        ISB,
        CW,
        IQ,
        PULSE,
        TV,
        ModeCount
    };

    Mode GetMode() const { return m_mode; }
    void SetMode(Mode mode) { m_mode = mode; }

    /// The name of a mode: "UNKNOWN", "AM", "FM", "PM", "USB", "LSB", "ISB", "CW", "IQ",
    /// "PULSE", "TV"; "UNKNOWN" for a value outside the enumeration.
    static QString ModeToName(Mode mode);
    static QString ModeToName(int mode) { return ModeToName(static_cast<Mode>(mode)); }
    /// The mode of a name as ModeToName() writes it; ok (if given) is false and the result
    /// Unknown for any other text.
    static Mode NameToMode(QString const& name, bool* ok = nullptr);

    REPORTKIT::Frequency& GetBandwidth() { return m_bandwidth; }
    REPORTKIT::Frequency const& GetBandwidth() const { return m_bandwidth; }
    /// Throws REPORTKIT::RGException for a negative or non-finite value while validating.
    void SetBandwidth(double hertz);

    Decoder& GetDecoder() { return m_decoder; }
    Decoder const& GetDecoder() const { return m_decoder; }
    void SetDecoder(Decoder const& decoder) { m_decoder = decoder; }

    QString const& GetAlphabet() const { return m_alphabet; }
    void SetAlphabet(QString const& alphabet) { m_alphabet = alphabet; }

    /// The transmission-system mode ("AIS", "POCSAG", ...); empty when not given.
    QString const& GetTransmissionSystemMode() const { return m_transmissionSystem; }
    void SetTransmissionSystemMode(QString const& mode) { m_transmissionSystem = mode; }

    void SetValidate(bool validate) override;

    QString ElementName() const override;
    void WriteXml(QXmlStreamWriter& writer) const override;
    bool ReadXml(QXmlStreamReader& reader, QString& error) override;

    bool operator==(Demodulator_Settings const& other) const;
    bool operator!=(Demodulator_Settings const& other) const { return !(*this == other); }

private:
    Mode m_mode = Unknown;
    REPORTKIT::Frequency m_bandwidth;
    Decoder m_decoder;
    QString m_alphabet;
    QString m_transmissionSystem;
};

} // namespace JobSpec
