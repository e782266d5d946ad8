#pragma once

#include <QString>
#include <functional>

class QXmlStreamWriter;

namespace REPORTKIT {

/// The XML text form shared by the host libraries' objects: an indented document with an
/// XML declaration around whatever write() puts in.
class XmlWriting
{
public:
    /// failed, when given, tells whether the writer reported an error.
    static QString documentText(std::function<void(QXmlStreamWriter&)> const& write,
                                bool* failed = nullptr);
};

} // namespace REPORTKIT
