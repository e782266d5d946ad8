#include "hopperfrequencyset.h"

#include "hopperfrequencyalgorithm.h"

namespace zelkodatastreamconverter::BurstEmissionList {

bool HopperFrequencySet::significantChange(std::vector<double> const& otherFrequencies,
                                           double const& tolerance) const
{
    return HopperFrequencyAlgorithm::significantDifference(frequencies, otherFrequencies,
                                                           tolerance);
}

QString HopperFrequencySet::toString() const
{
    QString text =
        QStringLiteral("HopperFrequencySet[%1;%2k;")
            .arg(frequencies.size())
            .arg(QString::number(gridEstimation.getMeanChannelSpacing() / 1000.0, 'g', 6));
    for (double frequency : frequencies) {
        text += QString::number(frequency / 1e6, 'g', 6);
        text += QStringLiteral("M;");
    }
    text += gridEstimation.toString();
    text += QLatin1Char(']');
    return text;
}

QDataStream& operator<<(QDataStream& stream, HopperFrequencySet const& set)
{
    stream << set.gridEstimation << qint32(set.frequencies.size());
    for (double frequency : set.frequencies) {
        stream << frequency;
    }
    return stream;
}

QDataStream& operator>>(QDataStream& stream, HopperFrequencySet& set)
{
    set = HopperFrequencySet();
    stream >> set.gridEstimation;
    qint32 count = 0;
    stream >> count;
    for (qint32 i = 0; i < count && stream.status() == QDataStream::Ok; ++i) {
        double frequency = 0.0;
        stream >> frequency;
        if (stream.status() == QDataStream::Ok) {
            set.frequencies.push_back(frequency);
        }
    }
    if (count < 0 && stream.status() == QDataStream::Ok) {
        stream.setStatus(QDataStream::ReadCorruptData);
    }
    if (stream.status() != QDataStream::Ok) {
        set = HopperFrequencySet();
    }
    return stream;
}

} // namespace zelkodatastreamconverter::BurstEmissionList
