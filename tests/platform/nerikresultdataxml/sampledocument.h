#pragma once

#include <memory>
#include <nerikresultdataxml/nerikresultdata.h>
#include <ostream>
#include <support/qstringprinter.h> // readable QString values in test failures

namespace sample {

QDateTime at(int hour, int minute, int second, int millisecond = 0);

/// A document that uses every element and attribute of the format: two transmissions,
/// infos, text blocks with time stamps, raw content and user data, nested PDU blocks with
/// fields, payloads and user data. Texts are taken from text (when not null) so that a
/// hostile text reaches every slot.
std::unique_ptr<NerikResultDataXml::NerikResultData> richDocument(QString const& text = QString());

} // namespace sample
