#pragma once

#include <QDateTime>
#include <reportkit/xmlelementobject.h>

namespace JobSpec {

/// A radio station seen in a job, for example a ship that sent AIS position reports:
/// station ID (the MMSI for ships), time of the last report, name (call sign) and position
/// in decimal degrees, north and east positive. Name, latitude and longitude each know
/// whether they have been set.
///
/// XML form:
///   <Station id="211234567" timeStamp="2024-01-31T23:59:59.123Z" name="DABC"
///            latitude="53.53625" longitude="9.966667"/>
/// id is required; the rest is optional. latitude lies in [-90, 90], longitude in
/// [-180, 180].
class Station : public REPORTKIT::XmlElementObject
{
public:
    void SetStationID(int id) { m_id = id; }
    int GetStationID() const { return m_id; }

    void SetTimeStamp(QDateTime const& time) { m_timeStamp = time; }
    QDateTime const& GetTimeStamp() const { return m_timeStamp; }

    /// Marks the name as set, also for an empty name.
    void SetName(QString const& name);
    QString const& GetName() const { return m_name; }
    bool IsNameSet() const { return m_nameSet; }

    /// Throws REPORTKIT::RGException outside [-90, 90] while validating.
    void SetLatitude(double degrees);
    double GetLatitude() const { return m_latitude; }
    bool IsLatitudeSet() const { return m_latitudeSet; }

    /// Throws REPORTKIT::RGException outside [-180, 180] while validating.
    void SetLongitude(double degrees);
    double GetLongitude() const { return m_longitude; }
    bool IsLongitudeSet() const { return m_longitudeSet; }

    /// True when both latitude and longitude are set.
    bool IsPositionSet() const { return m_latitudeSet && m_longitudeSet; }

    QString ElementName() const override;
    void WriteXml(QXmlStreamWriter& writer) const override;
    bool ReadXml(QXmlStreamReader& reader, QString& error) override;

    bool operator==(Station const& other) const;
    bool operator!=(Station const& other) const { return !(*this == other); }

private:
    int m_id = 0;
    QDateTime m_timeStamp;
    QString m_name;
    double m_latitude = 0.0;
    double m_longitude = 0.0;
    bool m_nameSet = false;
    bool m_latitudeSet = false;
    bool m_longitudeSet = false;
};

} // namespace JobSpec
