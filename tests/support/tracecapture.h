#pragma once

#include <QString>
#include <QStringList>
#include <vector>

namespace zelkotest {

struct TraceLine
{
    QString message;
    QString sourceFile;
    unsigned short line;
};

/// Collects every trace while it lives, with the given mask; restores the default sink and
/// the previous mask afterwards.
class TraceCapture
{
public:
    explicit TraceCapture(unsigned mask = 0x20);
    ~TraceCapture();
    TraceCapture(TraceCapture const&) = delete;
    TraceCapture& operator=(TraceCapture const&) = delete;

    std::vector<TraceLine> const& lines() const { return m_lines; }
    QStringList messages() const;
    int count(QString const& message) const;
    void clear() { m_lines.clear(); }

private:
    unsigned m_previousMask;
    std::vector<TraceLine> m_lines;
};

} // namespace zelkotest
