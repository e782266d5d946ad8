#include "transmissionsystemhelper.h"

#include <QDir>
#include <QFile>
#include <initializer_list>
#include <iterator>
#include <vector>

namespace zelkodatastreamconverter {

QString const TransmissionSystemHelper::MIDFileName = QStringLiteral("MaritimListofCountries.csv");

namespace {

using Table = std::vector<QString>;

QString translated(char const* text)
{
    return QCoreApplication::translate("zelkodatastreamconverter::TransmissionSystemHelper", text);
}

Table translatedTable(std::initializer_list<char const*> texts)
{
    Table table;
    table.reserve(texts.size());
    for (char const* text : texts) {
        table.push_back(translated(text));
    }
    return table;
}

// Modulation names, percentages and speed levels read the same in every language; only the
// "not applicable" entry in front of them is translated.
Table notApplicableThen(std::initializer_list<char const*> untranslated)
{
    Table table{translated("n.a.")};
    for (char const* text : untranslated) {
        table.push_back(QString::fromLatin1(text));
    }
    return table;
}

QString const& unknownText()
{
    static QString const text = translated("unknown");
    return text;
}

QString const& entry(Table const& table, quint32 index)
{
    return index < table.size() ? table[index] : unknownText();
}

// "005 (unknown)": the code that a country table lacks, in at least three digits.
QString unknownCode(quint32 code)
{
    return QStringLiteral("%1 (%2)").arg(code, 3, 10, QLatin1Char('0')).arg(unknownText());
}

struct CountryCode
{
    quint32 code;
    char const* name;
};

// The ITU-T list of assigned E.164 country calling codes (data/e164_country_codes.csv), in
// ascending order, non-country rows included. The Vatican City State shares Italy's code 39,
// and the table enters it right after Italy: the later entry stands, so 39 reads "Vatican City
// State", as in the result documents analysts already hold.
// clang-format off
CountryCode const countryCodes[] = {
    {1, "United States of America"},
    {7, "Russian Federation"},
    {20, "Egypt (Arab Republic of)"},
    {27, "South Africa (Republic of)"},
    {30, "Greece"},
    {31, "Netherlands (Kingdom of the)"},
    {32, "Belgium"},
    {33, "France"},
    {34, "Spain"},
    {36, "Hungary (Republic of)"},
    {39, "Italy"},
    {39, "Vatican City State"},
    {40, "Romania"},
    {41, "Switzerland (Confederation of)"},
    {43, "Austria"},
    {44, "United Kingdom of Great Britain and Northern Ireland"},
    {45, "Denmark"},
    {46, "Sweden"},
    {47, "Norway"},
    {48, "Poland (Republic of)"},
    {49, "Germany (Federal Republic of)"},
    {51, "Peru"},
    {52, "Mexico"},
    {53, "Cuba"},
    {54, "Argentine Republic"},
    {55, "Brazil (Federative Republic of)"},
    {56, "Chile"},
    {57, "Colombia (Republic of)"},
    {58, "Venezuela (Bolivarian Republic of)"},
    {60, "Malaysia"},
    {61, "Australia"},
    {62, "Indonesia (Republic of)"},
    {63, "Philippines (Republic of the)"},
    {64, "New Zealand"},
    {65, "Singapore (Republic of)"},
    {66, "Thailand"},
    {81, "Japan"},
    {82, "Korea (Republic of)"},
    {84, "Viet Nam (Socialist Republic of)"},
    {86, "China (People's Republic of)"},
    {90, "Turkey"},
    {91, "India (Republic of)"},
    {92, "Pakistan (Islamic Republic of)"},
    {93, "Afghanistan"},
    {94, "Sri Lanka (Democratic Socialist Republic of)"},
    {95, "Myanmar (the Republic of the Union of)"},
    {98, "Iran (Islamic Republic of)"},
    {211, "South Sudan (Republic of)"},
    {212, "Morocco (Kingdom of)"},
    {213, "Algeria (People's Democratic Republic of)"},
    {216, "Tunisia"},
    {218, "Libya (Socialist People's Libyan Arab Jamahiriya)"},
    {220, "Gambia (Republic of the)"},
    {221, "Senegal (Republic of)"},
    {222, "Mauritania (Islamic Republic of)"},
    {223, "Mali (Republic of)"},
    {224, "Guinea (Republic of)"},
    {225, "Côte d'Ivoire (Republic of)"},
    {226, "Burkina Faso"},
    {227, "Niger (Republic of the)"},
    {228, "Togolese Republic"},
    {229, "Benin (Republic of)"},
    {230, "Mauritius (Republic of)"},
    {231, "Liberia (Republic of)"},
    {232, "Sierra Leone"},
    {233, "Ghana"},
    {234, "Nigeria (Federal Republic of)"},
    {235, "Chad (Republic of)"},
    {236, "Central African Republic"},
    {237, "Cameroon (Republic of)"},
    {238, "Cape Verde (Republic of)"},
    {239, "Sao Tome and Principe (Democratic Republic of)"},
    {240, "Equatorial Guinea (Republic of)"},
    {241, "Gabonese Republic"},
    {242, "Congo (Republic of the)"},
    {243, "Democratic Republic of the Congo"},
    {244, "Angola (Republic of)"},
    {245, "Guinea-Bissau (Republic of)"},
    {246, "Diego Garcia"},
    {247, "Saint Helena, Ascension and Tristan da Cunha"},
    {248, "Seychelles (Republic of)"},
    {249, "Sudan (Republic of the)"},
    {250, "Rwanda (Republic of)"},
    {251, "Ethiopia (Federal Democratic Republic of)"},
    {252, "Somali Democratic Republic"},
    {253, "Djibouti (Republic of)"},
    {254, "Kenya (Republic of)"},
    {255, "Tanzania (United Republic of)"},
    {256, "Uganda (Republic of)"},
    {257, "Burundi (Republic of)"},
    {258, "Mozambique (Republic of)"},
    {260, "Zambia (Republic of)"},
    {261, "Madagascar (Republic of)"},
    {262, "French Departments and Territories in the Indian Ocean"},
    {263, "Zimbabwe (Republic of)"},
    {264, "Namibia (Republic of)"},
    {265, "Malawi"},
    {266, "Lesotho (Kingdom of)"},
    {267, "Botswana (Republic of)"},
    {268, "Swaziland (Kingdom of)"},
    {269, "Comoros (Union of the)"},
    {290, "Saint Helena, Ascension and Tristan da Cunha"},
    {291, "Eritrea"},
    {297, "Aruba"},
    {298, "Faroe Islands"},
    {299, "Greenland (Denmark)"},
    {350, "Gibraltar"},
    {351, "Portugal"},
    {352, "Luxembourg"},
    {353, "Ireland"},
    {354, "Iceland"},
    {355, "Albania (Republic of)"},
    {356, "Malta"},
    {357, "Cyprus (Republic of)"},
    {358, "Finland"},
    {359, "Bulgaria (Republic of)"},
    {370, "Lithuania (Republic of)"},
    {371, "Latvia (Republic of)"},
    {372, "Estonia (Republic of)"},
    {373, "Moldova (Republic of)"},
    {374, "Armenia (Republic of)"},
    {375, "Belarus (Republic of)"},
    {376, "Andorra (Principality of)"},
    {377, "Monaco (Principality of)"},
    {378, "San Marino (Republic of)"},
    {379, "Vatican City State"},
    {380, "Ukraine"},
    {381, "Serbia (Republic of)"},
    {382, "Montenegro (Republic of)"},
    {385, "Croatia (Republic of)"},
    {386, "Slovenia (Republic of)"},
    {387, "Bosnia and Herzegovina"},
    {388, "Group of countries, shared code"},
    {389, "The Former Yugoslav Republic of Macedonia"},
    {420, "Czech Republic"},
    {421, "Slovak Republic"},
    {423, "Liechtenstein (Principality of)"},
    {500, "Falkland Islands (Malvinas)"},
    {501, "Belize"},
    {502, "Guatemala (Republic of)"},
    {503, "El Salvador (Republic of)"},
    {504, "Honduras (Republic of)"},
    {505, "Nicaragua"},
    {506, "Costa Rica"},
    {507, "Panama (Republic of)"},
    {508, "Saint Pierre and Miquelon (Collectivité territoriale de la République française)"},
    {509, "Haiti (Republic of)"},
    {590, "Guadeloupe (French Department of)"},
    {591, "Bolivia (Plurinational State of)"},
    {592, "Guyana"},
    {593, "Ecuador"},
    {594, "French Guiana (French Department of)"},
    {595, "Paraguay (Republic of)"},
    {596, "Martinique (French Department of)"},
    {597, "Suriname (Republic of)"},
    {598, "Uruguay (Eastern Republic of)"},
    {599, "Curaçao"},
    {670, "Democratic Republic of Timor-Leste"},
    {672, "Australian External Territories"},
    {673, "Brunei Darussalam"},
    {674, "Nauru (Republic of)"},
    {675, "Papua New Guinea"},
    {676, "Tonga (Kingdom of)"},
    {677, "Solomon Islands"},
    {678, "Vanuatu (Republic of)"},
    {679, "Fiji (Republic of)"},
    {680, "Palau (Republic of)"},
    {681, "Wallis and Futuna (Territoire français d'outre-mer)"},
    {682, "Cook Islands"},
    {683, "Niue"},
    {685, "Samoa (Independent State of)"},
    {686, "Kiribati (Republic of)"},
    {687, "New Caledonia (Territoire français d'outre-mer)"},
    {688, "Tuvalu"},
    {689, "French Polynesia (Territoire français d'outre-mer)"},
    {690, "Tokelau"},
    {691, "Micronesia (Federated States of)"},
    {692, "Marshall Islands (Republic of the)"},
    {800, "International Freephone Service"},
    {808, "International Shared Cost Service (ISCS)"},
    {850, "Democratic People's Republic of Korea"},
    {851, "Spare code"},
    {852, "Hong Kong, China"},
    {853, "Macao, China"},
    {854, "Spare code"},
    {855, "Cambodia (Kingdom of)"},
    {856, "Lao People's Democratic Republic"},
    {870, "Inmarsat SNAC"},
    {875, "Reserved - Maritime Mobile Service Applications"},
    {876, "Reserved - Maritime Mobile Service Applications"},
    {877, "Reserved - Maritime Mobile Service Applications"},
    {878, "Universal Personal Telecommunication Service (UPT)"},
    {879, "Reserved for national non-commercial purposes"},
    {880, "Bangladesh (People's Republic of)"},
    {881, "Global Mobile Satellite System (GMSS), shared code"},
    {882, "International Networks, shared code"},
    {883, "International Networks, shared code"},
    {886, "Taiwan, China"},
    {888, "Telecommunications for Disaster Relief (TDR)"},
    {960, "Maldives (Republic of)"},
    {961, "Lebanon"},
    {962, "Jordan (Hashemite Kingdom of)"},
    {963, "Syrian Arab Republic"},
    {964, "Iraq (Republic of)"},
    {965, "Kuwait (State of)"},
    {966, "Saudi Arabia (Kingdom of)"},
    {967, "Yemen (Republic of)"},
    {968, "Oman (Sultanate of)"},
    {969, "Reserved - reservation currently under investigation"},
    {970, "Reserved"},
    {971, "United Arab Emirates"},
    {972, "Israel (State of)"},
    {973, "Bahrain (Kingdom of)"},
    {974, "Qatar (State of)"},
    {975, "Bhutan (Kingdom of)"},
    {976, "Mongolia"},
    {977, "Nepal (Federal Democratic Republic of)"},
    {978, "Spare code"},
    {979, "International Premium Rate Service (IPRS)"},
    {991, "Trial of a proposed new international telecommunication public correspondence service, shared code"},
    {992, "Tajikistan (Republic of)"},
    {993, "Turkmenistan"},
    {994, "Azerbaijani Republic"},
    {995, "Georgia"},
    {996, "Kyrgyz Republic"},
    {998, "Uzbekistan (Republic of)"},
};
// clang-format on

} // namespace

QString const& TransmissionSystemHelper::GetBOS_BOS(quint32 organisation) const
{
    static Table const table = translatedTable(
        {"", "Polizei", "Bundesgrenzschutz", "Bundeskriminalamt", "Katastrophenschutz", "Zoll",
         "Feuerwehr", "Technisches Hilfswerk", "Arbeiter-Samariter-Bund", "Deutsches Rotes Kreuz",
         "Johanniter-Unfall-Hilfe", "Malteser-Hilfsdienst", "Deutsche Lebensrettungsgesellschaft",
         "Rettungsdienst", "Zivilschutz", "Fernwirktelegramme"});
    return entry(table, organisation);
}

QString const& TransmissionSystemHelper::GetBOS_STATE(quint32 state) const
{
    // The last four entries split the state codes 14 and 15 by district; the processor picks
    // the entry.
    static Table const table = translatedTable(
        {"Sachsen", "Bund", "Baden-Würtemberg", "Bayern I", "Berlin", "Bremen", "Hamburg", "Hessen",
         "Niedersachsen", "Nordrhein-Westfalen", "Rheinland-Pfalz", "Schleswig-Holstein",
         "Saarland", "Bayern II", "Mecklenburg-Vorpommern (District 00:49)",
         "Sachsen-Anhalt (District 50:99)", "Brandenburg (District 00:49)",
         "Thüringen (District 50:99)"});
    return entry(table, state);
}

QString const& TransmissionSystemHelper::GetBOS_STATUS(quint32 status, quint32 direction) const
{
    static Table const fromVehicle = translatedTable(
        {"Notruf", "Dienstspezifisch", "Dienstspezifisch", "Dienstspezifisch", "Dienstspezifisch",
         "Dienstspezifisch", "Dienstspezifisch", "Dienstspezifisch", "Dienstspezifisch",
         "Handquittung/Fremdanmeldung", "Vorbereitung Folgetelegramm", "Ende Folgetelegramm",
         "Sonderanwendung", "Sonderanwendung", "Automatische Quittung", "Sprechtaste"});
    static Table const fromControlCentre = translatedTable(
        {"Statusabfrage", "Dienstspezifisch", "Dienstspezifisch", "Dienstspezifisch",
         "Dienstspezifisch", "Dienstspezifisch", "Dienstspezifisch", "Dienstspezifisch",
         "Fernwirkkriterium I", "Fernwirkkriterium II", "Vorbereitung Folgetelegramm",
         "Ende Folgetelegram", "Digitaler Meldeempfänger", "Digitaler Meldeempfänger",
         "Digitaler Meldeempfänger", "Automatische Quittung"});
    return entry((direction & 2) != 0 ? fromControlCentre : fromVehicle, status);
}

QString const& TransmissionSystemHelper::GetZVEI_BAK(quint32 code) const
{
    static Table const table =
        translatedTable({"disposible", "call to vehicle", "call to control center", "identifier",
                         "handshaking passive", "reserved", "disconnect call", "reserved",
                         "priority call", "status request", "reserved", "handshaking active",
                         "reserved", "disposible", "disposible", "emergency call"});
    return entry(table, code);
}

QString const& TransmissionSystemHelper::GetVDEW_BAK(quint32 code) const
{
    static Table const table =
        translatedTable({"available", "call to mobile station", "direct dial", "identifier",
                         "handshaking passive", "series information", "closing call", "call-back",
                         "ermergency call", "status request/answer", "call (position control)",
                         "handshaking active", "speed calling", "data", "reserved", "not used"});
    return entry(table, code);
}

QString const& TransmissionSystemHelper::GetPR_FRAME_TYPE(quint32 type) const
{
    static Table const table = translatedTable({"Information", "Supervisory", "Unnumbered"});
    return entry(table, type);
}

QString const& TransmissionSystemHelper::GetPR_MODIFIER_FUNCTION(quint32 function) const
{
    static Table const table = translatedTable(
        {"UI (Unnumbered Information Frame)", "DM (Disconnect Mode)", "SABM (Connect Request)",
         "DISC (Disconnect Request)", "UA (Unnumbered Acknowledge)",
         "SABME (Connect Request Extended)", "FRMR (Frame reject)",
         "XID (Exchange Identifications)", "TEST (Test)", "MF_UNKNOWN (Type Not Determined)"});
    return entry(table, function);
}

QString const& TransmissionSystemHelper::GetPR_SUPERVISOR_FUNCTION(quint32 function) const
{
    static Table const table =
        translatedTable({"RR (Receive Ready)", "RNR (Receive Not Ready)", "REJ (Reject Frame)",
                         "SREJ (Selective Reject)", "SF_UNKNOWN (Type Not Determined)"});
    return entry(table, function);
}

QString TransmissionSystemHelper::GetPR_PID(quint32 pid) const
{
    switch (pid) {
    case 0x00:
        return tr("No data burst");
    case 0x01:
        return tr("ISO 8208/CCITT X.25 PLP");
    case 0x06:
        return tr("Compressed TCP/IP");
    case 0x07:
        return tr("Uncompressed TCP/IP");
    case 0x08:
        return tr("Segmentation fragment");
    case 0xC3:
        return tr("TEXNET datagram protocol");
    case 0xC4:
        return tr("Link Quality protocol");
    case 0xCA:
        return tr("Appletalk");
    case 0xCB:
        return tr("Appletalk ARP");
    case 0xCC:
        return tr("ARPA Internet Protocol");
    case 0xCD:
        return tr("ARPA Address Resolution");
    case 0xCE:
        return tr("FlexNet");
    case 0xCF:
        return tr("NET/ROM");
    case 0xF0:
        return tr("No Layer 3 protocol implemented unknown");
    case 0xFF:
        return tr("Escape character. Next octet contains more Level 3 protocol information.");
    default:
        // A PID with no name is shown as it was received; values past one octet come from
        // damaged records and keep all their digits.
        return QStringLiteral("0x%1").arg(pid, 2, 16, QLatin1Char('0'));
    }
}

QString const& TransmissionSystemHelper::GetCLOVER_BLOCK_TYPE(quint32 type) const
{
    static Table const table =
        translatedTable({"USER DATA", "CONTROL INFORMATION", "CONNECTION INFORMATION", "IDLE"});
    return entry(table, type);
}

QString const& TransmissionSystemHelper::GetCLOVER_CODE_EFFICIENCY(quint32 efficiency) const
{
    static Table const table = translatedTable({"UNKNOWN", "ROBUST", "NORMAL", "FAST", "OFF"});
    return entry(table, efficiency);
}

QString const& TransmissionSystemHelper::GetCLOVER_SPEED_LEVEL(quint32 level) const
{
    static Table const table =
        notApplicableThen({"2DPSK2A", "PSK2A", "PSK4A", "PSK8A", "PSK8A/ASK2", "PSK16A/ASK4"});
    return entry(table, level);
}

QString const& TransmissionSystemHelper::GetPACTOR_BURST_TYPE(quint32 type) const
{
    static Table const table = translatedTable({"UNKNOWN", "CS", "DATA", "IDLE", "CALLSIGN"});
    return entry(table, type);
}

QString const& TransmissionSystemHelper::GetPACTOR_CLOVER_CONTENT_TYPE(quint32 type) const
{
    static Table const table = translatedTable({"unknown", "text data", "binary data"});
    return entry(table, type);
}

QString const& TransmissionSystemHelper::GetPACTOR_CLOVER_SIDEBAND_MODE(quint32 mode) const
{
    static Table const table = translatedTable({"unknown", "USB", "LSB"});
    return entry(table, mode);
}

QString const& TransmissionSystemHelper::GetPACTOR_DATA_CHAT_MODE(quint32 mode) const
{
    static Table const table = translatedTable({"n.a.", "unknown", "yes", "no"});
    return entry(table, mode);
}

QString const& TransmissionSystemHelper::GetPACTOR_DATA_MODE_SUGGESTION(quint32 suggestion) const
{
    static Table const table = translatedTable({"OFF", "ON"});
    return entry(table, suggestion);
}

QString const& TransmissionSystemHelper::GetPACTOR_DATA_TYPE(quint32 type) const
{
    static Table const table = translatedTable(
        {"ASCII-8-bit", "HUFFMAN", "HUFFMAN (swapped, upper case)", "reserved", "PMC2 GERMAN",
         "PMC GERMAN (swapped)", "PMC ENGLISH", "PMC ENGLISH (swapped)"});
    return entry(table, type);
}

QString const& TransmissionSystemHelper::GetPACTOR_DECODING_QUALITY(quint32 quality) const
{
    // Steps of one fifteenth, rounded to whole percent.
    static Table const table =
        notApplicableThen({"7 %", "14 %", "20 %", "27 %", "33 %", "40 %", "47 %", "53 %", "60 %",
                           "67 %", "73 %", "80 %", "87 %", "93 %", "100 %"});
    return entry(table, quality);
}

QString const& TransmissionSystemHelper::GetPACTOR_PATH_MODE(quint32 mode) const
{
    static Table const table = translatedTable({"n.a.", "unknown", "normal", "long"});
    return entry(table, mode);
}

QString const& TransmissionSystemHelper::GetPACTOR_QRT_PACKET(quint32 qrt) const
{
    static Table const table = translatedTable({"NO", "YES"});
    return entry(table, qrt);
}

QString const& TransmissionSystemHelper::GetPACTOR_SPEED_LEVEL(quint32 level) const
{
    static Table const table = notApplicableThen({"SL1", "SL2", "SL3", "SL4", "SL5", "SL6"});
    return entry(table, level);
}

QString const& TransmissionSystemHelper::GetPACTOR_SPEED_LEVEL_REQUEST(quint32 request) const
{
    static Table const table = translatedTable({"OFF", "ON"});
    return entry(table, request);
}

QString const& TransmissionSystemHelper::GetPACTOR_TRANSMISSION_MODE(quint32 mode) const
{
    static Table const table = translatedTable({"n.a.", "unknown", "ARQ", "unpronto"});
    return entry(table, mode);
}

QString const& TransmissionSystemHelper::GetPACTOR_VARIANT(quint32 variant) const
{
    static Table const table = translatedTable({"UNKNOWN", "", "PACTOR II", "PACTOR III"});
    return entry(table, variant);
}

QString const& TransmissionSystemHelper::GetF7W_PAYLOAD_TYPE(quint32 type) const
{
    static Table const table = translatedTable({"RAW", "ASCII", "MORSE"});
    return entry(table, type);
}

QString const& TransmissionSystemHelper::GetMPT_TRANSMISSION_TYPE(quint32 type) const
{
    // The last entry is this table's own default, spelt as MPT1327 users have always seen it.
    static Table const table =
        translatedTable({"Voice", "Data", "SDM", "System Operation", "unkown"});
    return table[qMin<quint32>(type, quint32(table.size() - 1))];
}

QString const& TransmissionSystemHelper::GetCRCText(bool ok) const
{
    static Table const table = translatedTable({"not ok", "ok"});
    return table[ok ? 1 : 0];
}

QString TransmissionSystemHelper::GetCountryName(quint32 code)
{
    if (m_countryMap.isEmpty()) {
        InitCountryMap();
    }
    auto const found = m_countryMap.constFind(code);
    return found != m_countryMap.constEnd() ? *found : unknownCode(code);
}

QString TransmissionSystemHelper::GetMIDCountryName(quint32 mid)
{
    if (m_midCountryMap.isEmpty()) {
        InitMIDCountryMap();
    }
    auto const found = m_midCountryMap.constFind(mid);
    return found != m_midCountryMap.constEnd() ? *found : unknownCode(mid);
}

void TransmissionSystemHelper::InitCountryMap()
{
    m_countryMap.reserve(int(std::size(countryCodes)));
    for (CountryCode const& row : countryCodes) {
        m_countryMap.insert(row.code, tr(row.name));
    }
}

void TransmissionSystemHelper::InitMIDCountryMap()
{
    QFile file(QDir::currentPath() + QLatin1Char('/') + MIDFileName);
    if (file.open(QIODevice::ReadOnly)) {
        while (!file.atEnd()) {
            QString const line = QString::fromUtf8(file.readLine());
            if (line.startsWith(QLatin1Char('#'))) {
                continue;
            }
            int const separator = line.indexOf(QLatin1Char(';'));
            if (separator < 0) {
                continue;
            }
            // The value keeps its ";" and line end: documents written by earlier versions
            // carry it that way, and analysts compare them with new ones.
            m_midCountryMap.insert(line.left(separator).toUInt(), line.mid(separator));
        }
    }
    if (m_midCountryMap.isEmpty()) {
        // A key no MID can have: the map is no longer empty, so the file is not looked for
        // again on every lookup.
        m_midCountryMap.insert(0xFFFFFFFFu, QString());
    }
}

} // namespace zelkodatastreamconverter
