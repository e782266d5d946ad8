#include "frequencymeanandsamplesize.h"

namespace zelkodatastreamconverter::BurstEmissionList {

QString FrequencyMeanAndSampleSize::toString() const
{
    return QStringLiteral("FrequencyMeanAndSampleSize[%1M;%2]")
        .arg(QString::number(mean / 1e6, 'g', 6))
        .arg(sampleSize);
}

} // namespace zelkodatastreamconverter::BurstEmissionList
