#include "aismessagetable.h"

#include <QCoreApplication>
#include <map>

namespace ais {

namespace {

using K = FieldKind;

// Raw values of ITU-R M.1371 that mean "not available" or "this much or more".
FieldSpec mmsi(char const* label = "MMSI")
{
    return {label, K::Unsigned, 30};
}

std::vector<FieldSpec> header()
{
    return {{"Message Type", K::Unsigned, 6}, {"Repeat Indicator", K::Unsigned, 2}, mmsi()};
}

FieldSpec const Accuracy{"Position Accuracy", K::Enum, 1, 1, -1, -1, 0, AccuracyBase};
FieldSpec const Position{"Position", K::Position, 55};
FieldSpec const Course{"Course over Ground (\u00B0)", K::Scaled, 12, 0.1, 3600};
FieldSpec const Heading{"True Heading (\u00B0)", K::Unsigned, 9, 1, 511};
FieldSpec const Second{"Time Stamp (s)", K::TimeStamp, 6};
FieldSpec const Raim{"RAIM", K::Bool, 1};
FieldSpec const CommunicationState{"Communication State", K::Unsigned, 19};
FieldSpec const Epfd{"Position Fixing Device", K::Enum, 4, 1, -1, -1, 0, EpfdBase};
FieldSpec const ShipType{"Ship and Cargo Type", K::Enum, 8, 1, -1, -1, 0, ShipTypeBase};
FieldSpec const SpeedA{"Speed over Ground (kn)", K::Scaled, 10, 0.1, 1023, 1022, SpeedAtLeast102};
FieldSpec const Name{"Name", K::Text, 120};
FieldSpec const CallSign{"Call Sign", K::Text, 42};
FieldSpec const AssignedMode{"Assigned Mode", K::Bool, 1};
FieldSpec const Dte{"DTE not ready", K::Bool, 1};

std::vector<FieldSpec> dimensions()
{
    return {{"Dimension to Bow (m)", K::Unsigned, 9, 1, 0, 511, LengthAtLeast511},
            {"Dimension to Stern (m)", K::Unsigned, 9, 1, 0, 511, LengthAtLeast511},
            {"Dimension to Port (m)", K::Unsigned, 6, 1, 0, 63, BreadthAtLeast63},
            {"Dimension to Starboard (m)", K::Unsigned, 6, 1, 0, 63, BreadthAtLeast63}};
}

std::vector<FieldSpec> operator+(std::vector<FieldSpec> first, std::vector<FieldSpec> const& second)
{
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

std::vector<FieldSpec> classAPosition()
{
    return header() +
           std::vector<FieldSpec>{
               {"Navigational Status", K::Enum, 4, 1, -1, -1, 0, NavigationalStatusBase},
               {"Rate of Turn (\u00B0/min)", K::RateOfTurn, 8, 1, -128},
               SpeedA, Accuracy, Position, Course, Heading, Second,
               {"Special Manoeuvre", K::Enum, 2, 1, -1, -1, 0, ManoeuvreBase},
               {nullptr, K::Spare, 3}, Raim, CommunicationState};
}

std::vector<FieldSpec> classBPosition()
{
    return header() + std::vector<FieldSpec>{{nullptr, K::Spare, 8}, SpeedA, Accuracy, Position,
                                             Course, Heading, Second, {nullptr, K::Spare, 2}};
}

std::vector<FieldSpec> payloadOnly()
{
    return header() + std::vector<FieldSpec>{{"Data", K::PayloadToEnd, 0}};
}

std::vector<MessageLayout> makeLayouts()
{
    std::vector<MessageLayout> layouts = {
        {1, -1, "AIS Position Report Class A", classAPosition()},
        {2, -1, "AIS Position Report Class A (Assigned Schedule)", classAPosition()},
        {3, -1, "AIS Position Report Class A (Response to Interrogation)", classAPosition()},
        {4, -1, "AIS Base Station Report",
         header() + std::vector<FieldSpec>{{"UTC Date and Time", K::DateTime, 40}, Accuracy,
                                           Position, Epfd,
                                           {"Transmission Control for Long-Range", K::Bool, 1},
                                           {nullptr, K::Spare, 9}, Raim, CommunicationState}},
        {5, -1, "AIS Static and Voyage Related Data",
         header() +
             std::vector<FieldSpec>{{"AIS Version", K::Unsigned, 2},
                                    {"IMO Number", K::Unsigned, 30, 1, 0},
                                    CallSign, Name, ShipType} +
             dimensions() +
             std::vector<FieldSpec>{Epfd, {"ETA", K::Eta, 20},
                                    {"Maximum Draught (m)", K::Scaled, 8, 0.1, 0, 255,
                                     DraughtAtLeast255},
                                    {"Destination", K::Text, 120}, Dte, {nullptr, K::Spare, 1}}},
        {6, -1, "AIS Binary Addressed Message", payloadOnly()},
        {7, -1, "AIS Binary Acknowledge", payloadOnly()},
        {8, -1, "AIS Binary Broadcast Message", payloadOnly()},
        {9, -1, "AIS Standard SAR Aircraft Position Report",
         header() + std::vector<FieldSpec>{{"Altitude (m)", K::Unsigned, 12, 1, 4095, 4094,
                                            AltitudeAtLeast4094},
                                           {"Speed over Ground (kn)", K::Unsigned, 10, 1, 1023,
                                            1022, SpeedAtLeast1022},
                                           Accuracy, Position, Course, Second,
                                           {"Altitude Sensor Barometric", K::Bool, 1},
                                           {nullptr, K::Spare, 7}, Dte, {nullptr, K::Spare, 3},
                                           AssignedMode, Raim,
                                           {"Communication State Selector", K::Bool, 1},
                                           CommunicationState}},
        {10, -1, "AIS UTC and Date Inquiry", payloadOnly()},
        {11, -1, "AIS UTC and Date Response", {}},
        {12, -1, "AIS Addressed Safety Related Message",
         header() + std::vector<FieldSpec>{{"Sequence Number", K::Unsigned, 2},
                                           mmsi("Destination MMSI"),
                                           {"Retransmitted", K::Bool, 1}, {nullptr, K::Spare, 1},
                                           {"Text", K::TextToEnd, 0}}},
        {13, -1, "AIS Safety Related Acknowledgement", payloadOnly()},
        {14, -1, "AIS Safety Related Broadcast Message",
         header() + std::vector<FieldSpec>{{nullptr, K::Spare, 2}, {"Text", K::TextToEnd, 0}}},
        {15, -1, "AIS Interrogation", payloadOnly()},
        {16, -1, "AIS Assignment Mode Command", payloadOnly()},
        {17, -1, "AIS DGNSS Broadcast Binary Message", payloadOnly()},
        {18, -1, "AIS Standard Class B CS Position Report",
         classBPosition() +
             std::vector<FieldSpec>{{"Class B CS Unit", K::Bool, 1},
                                    {"Class B Display", K::Bool, 1},
                                    {"Class B DSC", K::Bool, 1},
                                    {"Class B Whole Band", K::Bool, 1},
                                    {"Class B Message 22", K::Bool, 1}, AssignedMode, Raim,
                                    {"Communication State Selector", K::Bool, 1},
                                    CommunicationState}},
        {19, -1, "AIS Extended Class B Position Report",
         classBPosition() + std::vector<FieldSpec>{{nullptr, K::Spare, 2}, Name, ShipType} +
             dimensions() +
             std::vector<FieldSpec>{Epfd, Raim, Dte, AssignedMode, {nullptr, K::Spare, 4}}},
        {20, -1, "AIS Data Link Management", payloadOnly()},
        {21, -1, "AIS Aid-to-Navigation Report",
         header() +
             std::vector<FieldSpec>{{"Aid Type", K::Enum, 5, 1, -1, -1, 0, AtonTypeBase}, Name,
                                    Accuracy, Position} +
             dimensions() +
             std::vector<FieldSpec>{Epfd, Second, {"Off Position", K::Bool, 1},
                                    {"AtoN Status", K::Unsigned, 8}, Raim,
                                    {"Virtual Aid", K::Bool, 1}, AssignedMode,
                                    {nullptr, K::Spare, 1}, {"Name Extension", K::TextToEnd, 0}}},
        {22, -1, "AIS Channel Management", payloadOnly()},
        {23, -1, "AIS Group Assignment Command", payloadOnly()},
        {24, 0, "AIS Static Data Report Part A",
         header() + std::vector<FieldSpec>{{"Part Number", K::Unsigned, 2}, Name}},
        {24, 1, "AIS Static Data Report Part B",
         header() +
             std::vector<FieldSpec>{{"Part Number", K::Unsigned, 2}, ShipType,
                                    {"Vendor ID", K::Text, 18}, {"Unit Model Code", K::Unsigned, 4},
                                    {"Serial Number", K::Unsigned, 20}, CallSign} +
             dimensions() + std::vector<FieldSpec>{Epfd}},
        {25, -1, "AIS Single Slot Binary Message", payloadOnly()},
        {26, -1, "AIS Multiple Slot Binary Message", payloadOnly()},
        {27, -1, "AIS Long-Range Position Report",
         header() +
             std::vector<FieldSpec>{Accuracy, Raim,
                                    {"Navigational Status", K::Enum, 4, 1, -1, -1, 0,
                                     NavigationalStatusBase},
                                    {"Position", K::LowPosition, 35},
                                    {"Speed over Ground (kn)", K::Unsigned, 6, 1, 63},
                                    {"Course over Ground (\u00B0)", K::Unsigned, 9, 1, 511},
                                    {"Position Latency", K::Enum, 1, 1, -1, -1, 0, LatencyBase},
                                    {nullptr, K::Spare, 1}}},
    };
    // Type 11 answers type 10 with the layout of a base station report.
    for (MessageLayout& layout : layouts) {
        if (layout.type == 11) {
            layout.fields = layouts[3].fields;
        }
    }
    return layouts;
}

std::map<unsigned, MessageLayout> const& layoutsById()
{
    static std::map<unsigned, MessageLayout> const table = [] {
        std::map<unsigned, MessageLayout> byId;
        for (MessageLayout& layout : makeLayouts()) {
            byId.emplace(pduId(layout.type, layout.part), std::move(layout));
        }
        return byId;
    }();
    return table;
}

MessageLayout const& reservedLayout()
{
    static MessageLayout const layout{0, -1, "AIS Reserved Message", payloadOnly()};
    return layout;
}

QString shipTypeText(unsigned type)
{
    static char const* const secondDigit[] = {
        "all ships of this type",      "carrying DG, HS or MP, hazard category A",
        "carrying DG, HS or MP, hazard category B", "carrying DG, HS or MP, hazard category C",
        "carrying DG, HS or MP, hazard category D", "reserved for future use",
        "reserved for future use",     "reserved for future use",
        "reserved for future use",     "no additional information"};
    static std::map<unsigned, char const*> const single = {
        {0, "not available"},
        {30, "fishing"},
        {31, "towing"},
        {32, "towing, length over 200 m or breadth over 25 m"},
        {33, "dredging or underwater operations"},
        {34, "diving operations"},
        {35, "military operations"},
        {36, "sailing"},
        {37, "pleasure craft"},
        {50, "pilot vessel"},
        {51, "search and rescue vessel"},
        {52, "tug"},
        {53, "port tender"},
        {54, "anti-pollution equipment"},
        {55, "law enforcement"},
        {56, "local vessel"},
        {57, "local vessel"},
        {58, "medical transport"},
        {59, "noncombatant ship"}};
    static std::map<unsigned, char const*> const decades = {
        {2, "wing in ground"}, {4, "high speed craft"}, {6, "passenger"},
        {7, "cargo"},          {8, "tanker"},           {9, "other type"}};
    if (auto const found = single.find(type); found != single.end()) {
        return QString::fromLatin1(found->second);
    }
    if (auto const decade = decades.find(type / 10); decade != decades.end() && type < 100) {
        return QStringLiteral("%1, %2").arg(QLatin1String(decade->second),
                                            QLatin1String(secondDigit[type % 10]));
    }
    return QString::fromLatin1(type >= 100 && type < 200 ? "reserved for regional use"
                                                          : "reserved for future use");
}

QString listedText(unsigned id)
{
    static std::map<unsigned, char const*> const texts = {
        {NotAvailable, "not available"},
        {TurningRightFast, "turning right at more than 5\u00B0 per 30 s"},
        {TurningLeftFast, "turning left at more than 5\u00B0 per 30 s"},
        {SpeedAtLeast102, "102.2 or more"},
        {SpeedAtLeast1022, "1022 or more"},
        {AltitudeAtLeast4094, "4094 or more"},
        {DraughtAtLeast255, "25.5 or more"},
        {LengthAtLeast511, "511 or more"},
        {BreadthAtLeast63, "63 or more"},
        {NavigationalStatusBase + 0, "under way using engine"},
        {NavigationalStatusBase + 1, "at anchor"},
        {NavigationalStatusBase + 2, "not under command"},
        {NavigationalStatusBase + 3, "restricted manoeuvrability"},
        {NavigationalStatusBase + 4, "constrained by her draught"},
        {NavigationalStatusBase + 5, "moored"},
        {NavigationalStatusBase + 6, "aground"},
        {NavigationalStatusBase + 7, "engaged in fishing"},
        {NavigationalStatusBase + 8, "under way sailing"},
        {NavigationalStatusBase + 9, "reserved for high speed craft"},
        {NavigationalStatusBase + 10, "reserved for wing in ground"},
        {NavigationalStatusBase + 11, "towing astern"},
        {NavigationalStatusBase + 12, "pushing ahead or towing alongside"},
        {NavigationalStatusBase + 13, "reserved for future use"},
        {NavigationalStatusBase + 14, "AIS-SART, MOB-AIS or EPIRB-AIS active"},
        {NavigationalStatusBase + 15, "not defined"},
        {EpfdBase + 0, "undefined"},
        {EpfdBase + 1, "GPS"},
        {EpfdBase + 2, "GLONASS"},
        {EpfdBase + 3, "combined GPS/GLONASS"},
        {EpfdBase + 4, "Loran-C"},
        {EpfdBase + 5, "Chayka"},
        {EpfdBase + 6, "integrated navigation system"},
        {EpfdBase + 7, "surveyed"},
        {EpfdBase + 8, "Galileo"},
        {EpfdBase + 15, "internal GNSS"},
        {ManoeuvreBase + 0, "not available"},
        {ManoeuvreBase + 1, "no special manoeuvre"},
        {ManoeuvreBase + 2, "special manoeuvre"},
        {ManoeuvreBase + 3, "not used"},
        {AccuracyBase + 0, "low (more than 10 m)"},
        {AccuracyBase + 1, "high (10 m or less)"},
        {TimeStampBase + 60, "not available"},
        {TimeStampBase + 61, "manual input"},
        {TimeStampBase + 62, "dead reckoning"},
        {TimeStampBase + 63, "positioning system inoperative"},
        {LatencyBase + 0, "less than 5 s"},
        {LatencyBase + 1, "5 s or more"},
    };
    static char const* const aidTypes[32] = {
        "not specified", "reference point", "RACON", "fixed structure off shore",
        "emergency wreck marking buoy", "light, without sectors", "light, with sectors",
        "leading light front", "leading light rear", "beacon, cardinal N", "beacon, cardinal E",
        "beacon, cardinal S", "beacon, cardinal W", "beacon, port hand", "beacon, starboard hand",
        "beacon, preferred channel port hand", "beacon, preferred channel starboard hand",
        "beacon, isolated danger", "beacon, safe water", "beacon, special mark",
        "cardinal mark N", "cardinal mark E", "cardinal mark S", "cardinal mark W",
        "port hand mark", "starboard hand mark", "preferred channel port hand",
        "preferred channel starboard hand", "isolated danger", "safe water", "special mark",
        "light vessel, LANBY or rig"};
    if (auto const found = texts.find(id); found != texts.end()) {
        return QString::fromUtf8(found->second);
    }
    if (id >= EpfdBase + 9 && id <= EpfdBase + 14) {
        return QStringLiteral("not used");
    }
    if (id >= AtonTypeBase && id < AtonTypeBase + 32) {
        return QString::fromLatin1(aidTypes[id - AtonTypeBase]);
    }
    return QString();
}

} // namespace

unsigned pduId(unsigned type, int part)
{
    return 0x10000u + type * 16u + unsigned(part < 0 ? 0 : part);
}

MessageLayout const& layoutFor(unsigned type, int part)
{
    auto const& table = layoutsById();
    auto const found = table.find(pduId(type, type == 24 ? part : -1));
    return found == table.end() ? reservedLayout() : found->second;
}

MessageLayout const* layoutForPduId(unsigned id)
{
    auto const& table = layoutsById();
    auto const found = table.find(id);
    if (found != table.end()) {
        return &found->second;
    }
    return id >= 0x10000u && id < 0x10000u + 64u * 16u ? &reservedLayout() : nullptr;
}

std::vector<QString> labels(MessageLayout const& layout)
{
    std::vector<QString> result;
    for (FieldSpec const& field : layout.fields) {
        if (field.kind != FieldKind::Spare) {
            result.push_back(QString::fromUtf8(field.label));
        }
    }
    return result;
}

QString translation(unsigned id)
{
    if (id >= ShipTypeBase && id < ShipTypeBase + 256) {
        return shipTypeText(id - ShipTypeBase);
    }
    return listedText(id);
}

} // namespace ais
