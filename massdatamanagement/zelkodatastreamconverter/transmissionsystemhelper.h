#pragma once

#include <QCoreApplication>
#include <QHash>
#include <QString>

namespace zelkodatastreamconverter {

/// The fixed texts with which the transmission-system processors turn coded field values into
/// readable ones: FMS/BOS organisations, states and status meanings, ZVEI and VDEW tone-call
/// meanings, AX.25 frame types, functions and protocol identifiers, PACTOR and CLOVER modes,
/// checksum states, MPT1327 transmission types, and two country tables.
///
///     TransmissionSystemHelper helper;
///     helper.GetBOS_BOS(6);            // "Feuerwehr"
///     helper.GetBOS_STATUS(11, 2);     // "Ende Folgetelegram" (second array: bit value 2)
///     helper.GetPR_PID(0x1FF);         // "0x1ff"
///     helper.GetCountryName(39);       // "Vatican City State"
///     helper.GetMIDCountryName(211);   // ";Germany\n" as read from the file (see below)
///
/// Bounded tables: every getter takes the coded value and returns a constant reference to the
/// stored text; a value at or beyond the table's size gives "unknown" (the MPT1327 table has
/// its own default, "unkown"). The texts are kept exactly as receivers' users know them,
/// including their old spellings ("Baden-Würtemberg", "Ende Folgetelegram", "ermergency call",
/// "disposible", "unpronto"). Every text passes through tr() (context
/// "zelkodatastreamconverter::TransmissionSystemHelper") when its table is built, except
/// the modulation names, percentages and speed levels after the first entry of the CLOVER
/// speed level, PACTOR decoding quality and PACTOR speed level tables. The short tables are
/// built once per process, on the first call of their getter, and shared by all helpers; a
/// translator installed later does not change them.
///
/// Country tables: GetCountryName() looks up an ITU-T E.164 country calling code in a table
/// built into the library; GetMIDCountryName() looks up maritime identification digits in the
/// file "MaritimListofCountries.csv" of the process's working directory, read on the first
/// call. A line of that file is "MID;country"; lines starting with "#" and lines without ";"
/// are skipped, a MID that is no decimal number is stored under 0, and the stored value is the
/// rest of the line from the ";" on, line end included, exactly as the file has it. Without a
/// file (or a usable line) every MID reads as unknown, and the file is not looked for again.
/// A code that a country table lacks gives "%1 (unknown)" with the code in at least three
/// decimal digits ("005 (unknown)").
///
/// A helper is used on one thread; the short tables may be read from any thread.
class TransmissionSystemHelper
{
    Q_DECLARE_TR_FUNCTIONS(zelkodatastreamconverter::TransmissionSystemHelper)

public:
    /// The name of the maritime identification digits file in the working directory.
    static QString const MIDFileName;

    TransmissionSystemHelper() = default;
    virtual ~TransmissionSystemHelper() = default;
    TransmissionSystemHelper(TransmissionSystemHelper const&) = default;
    TransmissionSystemHelper& operator=(TransmissionSystemHelper const&) = default;

    // FMS/BOS vehicle radio.
    QString const& GetBOS_BOS(quint32 organisation) const;
    QString const& GetBOS_STATE(quint32 state) const;
    /// Bit value 2 of direction clear: status sent by a vehicle; set: sent by the control
    /// centre.
    QString const& GetBOS_STATUS(quint32 status, quint32 direction) const;

    // Tone calls.
    QString const& GetZVEI_BAK(quint32 code) const;
    QString const& GetVDEW_BAK(quint32 code) const;

    // AX.25 packet radio.
    QString const& GetPR_FRAME_TYPE(quint32 type) const;
    QString const& GetPR_MODIFIER_FUNCTION(quint32 function) const;
    QString const& GetPR_SUPERVISOR_FUNCTION(quint32 function) const;
    /// Protocol identifier; one that has no name gives "0x" and its hexadecimal value in at
    /// least two lower-case digits ("0x10", "0x1ff").
    QString GetPR_PID(quint32 pid) const;

    // PACTOR and CLOVER.
    QString const& GetCLOVER_BLOCK_TYPE(quint32 type) const;
    QString const& GetCLOVER_CODE_EFFICIENCY(quint32 efficiency) const;
    QString const& GetCLOVER_SPEED_LEVEL(quint32 level) const;
    QString const& GetPACTOR_BURST_TYPE(quint32 type) const;
    QString const& GetPACTOR_CLOVER_CONTENT_TYPE(quint32 type) const;
    QString const& GetPACTOR_CLOVER_SIDEBAND_MODE(quint32 mode) const;
    QString const& GetPACTOR_DATA_CHAT_MODE(quint32 mode) const;
    QString const& GetPACTOR_DATA_MODE_SUGGESTION(quint32 suggestion) const;
    QString const& GetPACTOR_DATA_TYPE(quint32 type) const;
    QString const& GetPACTOR_DECODING_QUALITY(quint32 quality) const;
    QString const& GetPACTOR_PATH_MODE(quint32 mode) const;
    QString const& GetPACTOR_QRT_PACKET(quint32 qrt) const;
    QString const& GetPACTOR_SPEED_LEVEL(quint32 level) const;
    QString const& GetPACTOR_SPEED_LEVEL_REQUEST(quint32 request) const;
    QString const& GetPACTOR_TRANSMISSION_MODE(quint32 mode) const;
    QString const& GetPACTOR_VARIANT(quint32 variant) const;

    // Other systems.
    QString const& GetF7W_PAYLOAD_TYPE(quint32 type) const;
    /// Any value beyond the four types gives "unkown".
    QString const& GetMPT_TRANSMISSION_TYPE(quint32 type) const;
    QString const& GetCRCText(bool ok) const;

    // Country tables (filled on first use).
    QString GetCountryName(quint32 code);
    QString GetMIDCountryName(quint32 mid);

private:
    void InitCountryMap();
    void InitMIDCountryMap();

    QHash<quint32, QString> m_countryMap;
    QHash<quint32, QString> m_midCountryMap;
};

} // namespace zelkodatastreamconverter
