#include "decoderchoice.h"

#include <alphabetkit/alphabetcatalog.h>

namespace zelkotool {

namespace {

// The converter's decoder before the job settings name one, and while they name several.
QString const NoDecoder = QStringLiteral("NONE");

QString notOffered(QString const& alphabet, QString const& decoder)
{
    return QStringLiteral("alphabet %1 is not offered by decoder %2; writing the codes")
        .arg(alphabet, decoder);
}

} // namespace

QString chooseDecoderForAlphabet(JobSpec::Settings& settings,
                                 AlphabetKit::AlphabetCatalog const& alphabets)
{
    JobSpec::Demodulator_Settings& demodulator = settings.GetDemodulator_Settings();
    QString const alphabet = demodulator.GetAlphabet();
    QStringList const decoders = demodulator.GetDecoder().GetValue();
    if (alphabet.isEmpty()) {
        return QString();
    }
    if (decoders.size() == 1) {
        return alphabets.find(alphabet, decoders.front()) ? QString()
                                                          : notOffered(alphabet, decoders.front());
    }
    if (alphabets.find(alphabet, NoDecoder)) {
        return QString();
    }
    AlphabetKit::AlphabetPtr const found = alphabets.find(alphabet);
    if (decoders.isEmpty() && found) {
        for (QString const& decoder : found->decoders()) {
            if (decoder != QLatin1String("*")) {
                JobSpec::Decoder chosen;
                chosen.AppendValue(decoder);
                demodulator.SetDecoder(chosen);
                return QString();
            }
        }
    }
    return decoders.isEmpty()
               ? notOffered(alphabet, NoDecoder)
               : notOffered(alphabet, NoDecoder) +
                     QStringLiteral(" (of several decoders the converter uses none)");
}

} // namespace zelkotool
