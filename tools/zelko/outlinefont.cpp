#include "outlinefont.h"

#include <QFile>
#include <QTransform>
#include <vector>

namespace zelkotool {

namespace {

// TrueType composite-glyph flags.
constexpr quint16 ArgsAreWords = 0x0001;
constexpr quint16 ArgsAreXYValues = 0x0002;
constexpr quint16 HaveScale = 0x0008;
constexpr quint16 MoreComponents = 0x0020;
constexpr quint16 HaveXYScale = 0x0040;
constexpr quint16 HaveTwoByTwo = 0x0080;

double f2dot14(qint16 value)
{
    return double(value) / 16384.0;
}

} // namespace

QString OutlineFont::defaultFontPath(bool bold)
{
    QString const name =
        bold ? QStringLiteral("DejaVuSans-Bold.ttf") : QStringLiteral("DejaVuSans.ttf");
    for (QString const& folder :
         {QStringLiteral("/usr/share/fonts/truetype/dejavu/"),
          QStringLiteral("/usr/share/fonts/dejavu/"), QStringLiteral("/usr/share/fonts/TTF/")}) {
        if (QFile::exists(folder + name)) {
            return folder + name;
        }
    }
    return QString();
}

quint16 OutlineFont::u16(qint64 offset) const
{
    if (offset < 0 || offset + 2 > m_data.size()) {
        return 0;
    }
    auto const* bytes = reinterpret_cast<uchar const*>(m_data.constData() + offset);
    return quint16((bytes[0] << 8) | bytes[1]);
}

quint32 OutlineFont::u32(qint64 offset) const
{
    return (quint32(u16(offset)) << 16) | u16(offset + 2);
}

bool OutlineFont::load(QString const& path)
{
    *this = OutlineFont();
    QFile file(path);
    if (path.isEmpty() || !file.open(QIODevice::ReadOnly)) {
        return false;
    }
    m_data = file.readAll();
    qint64 head = -1, maxp = -1, hhea = -1, cmap = -1;
    int const tables = u16(4);
    for (int i = 0; i < tables; ++i) {
        qint64 const record = 12 + 16 * i;
        QByteArray const tag = m_data.mid(int(record), 4);
        qint64 const offset = u32(record + 8);
        if (tag == "head") {
            head = offset;
        } else if (tag == "maxp") {
            maxp = offset;
        } else if (tag == "hhea") {
            hhea = offset;
        } else if (tag == "cmap") {
            cmap = offset;
        } else if (tag == "loca") {
            m_loca = offset;
        } else if (tag == "glyf") {
            m_glyf = offset;
            m_glyfLength = u32(record + 12);
        } else if (tag == "hmtx") {
            m_hmtx = offset;
        }
    }
    if (head < 0 || maxp < 0 || hhea < 0 || cmap < 0 || m_loca < 0 || m_glyf < 0 || m_hmtx < 0) {
        *this = OutlineFont();
        return false;
    }
    m_longLoca = s16(head + 50) != 0;
    m_numGlyphs = u16(maxp + 4);
    m_numberOfHMetrics = u16(hhea + 34);
    int const subtables = u16(cmap + 2);
    for (int i = 0; i < subtables; ++i) {
        qint64 const record = cmap + 4 + 8 * i;
        quint16 const platform = u16(record);
        quint16 const encoding = u16(record + 2);
        qint64 const subtable = cmap + u32(record + 4);
        if (u16(subtable) == 4 && ((platform == 3 && encoding == 1) || platform == 0)) {
            m_cmap4 = subtable;
            break;
        }
    }
    if (m_cmap4 < 0 || m_numberOfHMetrics == 0) {
        *this = OutlineFont();
        return false;
    }
    m_unitsPerEm = u16(head + 18);
    return m_unitsPerEm > 0;
}

quint16 OutlineFont::glyphIndex(uint codePoint) const
{
    if (codePoint > 0xFFFF) {
        return 0;
    }
    int const segments = u16(m_cmap4 + 6) / 2;
    qint64 const ends = m_cmap4 + 14;
    qint64 const starts = ends + 2 * segments + 2;
    qint64 const deltas = starts + 2 * segments;
    qint64 const rangeOffsets = deltas + 2 * segments;
    for (int i = 0; i < segments; ++i) {
        if (codePoint > u16(ends + 2 * i)) {
            continue;
        }
        quint16 const start = u16(starts + 2 * i);
        if (codePoint < start) {
            return 0;
        }
        quint16 const delta = u16(deltas + 2 * i);
        quint16 const rangeOffset = u16(rangeOffsets + 2 * i);
        if (rangeOffset == 0) {
            return quint16(codePoint + delta);
        }
        quint16 const glyph =
            u16(rangeOffsets + 2 * i + rangeOffset + 2 * qint64(codePoint - start));
        return glyph == 0 ? 0 : quint16(glyph + delta);
    }
    return 0;
}

quint16 OutlineFont::advanceWidth(quint16 glyph) const
{
    int const metric = glyph < m_numberOfHMetrics ? glyph : m_numberOfHMetrics - 1;
    return u16(m_hmtx + 4 * metric);
}

QPainterPath const& OutlineFont::glyphPath(quint16 glyph) const
{
    auto found = m_cache.find(glyph);
    if (found == m_cache.end()) {
        QPainterPath path;
        path.setFillRule(Qt::WindingFill);
        appendGlyph(path, glyph, QTransform(), 0);
        found = m_cache.emplace(glyph, path).first;
    }
    return found->second;
}

void OutlineFont::appendGlyph(QPainterPath& path, quint16 glyph, QTransform const& transform,
                              int depth) const
{
    if (glyph >= m_numGlyphs || depth > 4) {
        return;
    }
    qint64 const start =
        m_longLoca ? qint64(u32(m_loca + 4 * glyph)) : 2 * qint64(u16(m_loca + 2 * glyph));
    qint64 const end = m_longLoca ? qint64(u32(m_loca + 4 * (glyph + 1)))
                                  : 2 * qint64(u16(m_loca + 2 * (glyph + 1)));
    if (end <= start || end > m_glyfLength) {
        return; // no outline (a space)
    }
    qint64 const g = m_glyf + start;
    int const contours = s16(g);
    if (contours < 0) {
        qint64 p = g + 10;
        quint16 flags = MoreComponents;
        while (flags & MoreComponents) {
            flags = u16(p);
            quint16 const component = u16(p + 2);
            p += 4;
            double dx = 0, dy = 0;
            if (flags & ArgsAreWords) {
                dx = s16(p);
                dy = s16(p + 2);
                p += 4;
            } else {
                dx = qint8(m_data.at(int(p)));
                dy = qint8(m_data.at(int(p + 1)));
                p += 2;
            }
            double a = 1, b = 0, c = 0, d = 1;
            if (flags & HaveScale) {
                a = d = f2dot14(s16(p));
                p += 2;
            } else if (flags & HaveXYScale) {
                a = f2dot14(s16(p));
                d = f2dot14(s16(p + 2));
                p += 4;
            } else if (flags & HaveTwoByTwo) {
                a = f2dot14(s16(p));
                b = f2dot14(s16(p + 2));
                c = f2dot14(s16(p + 4));
                d = f2dot14(s16(p + 6));
                p += 8;
            }
            if (!(flags & ArgsAreXYValues)) {
                dx = dy = 0; // point matching: not needed for the labels drawn here
            }
            QTransform const local(a, b, c, d, dx, dy);
            appendGlyph(path, component, local * transform, depth + 1);
        }
        return;
    }
    std::vector<int> endPoints(static_cast<std::size_t>(contours));
    for (int i = 0; i < contours; ++i) {
        endPoints[std::size_t(i)] = u16(g + 10 + 2 * i);
    }
    int const points = contours > 0 ? endPoints.back() + 1 : 0;
    qint64 p = g + 10 + 2 * contours;
    p += 2 + u16(p); // instructions
    std::vector<quint8> flags;
    flags.reserve(std::size_t(points));
    while (int(flags.size()) < points && p < m_data.size()) {
        quint8 const flag = quint8(m_data.at(int(p++)));
        flags.push_back(flag);
        if (flag & 8) {
            int repeat = p < m_data.size() ? quint8(m_data.at(int(p++))) : 0;
            while (repeat-- > 0 && int(flags.size()) < points) {
                flags.push_back(flag);
            }
        }
    }
    if (int(flags.size()) < points) {
        return;
    }
    auto readCoordinates = [&](quint8 shortBit, quint8 sameBit) {
        std::vector<double> values(static_cast<std::size_t>(points));
        int value = 0;
        for (int i = 0; i < points; ++i) {
            quint8 const flag = flags[std::size_t(i)];
            if (flag & shortBit) {
                int const delta = p < m_data.size() ? quint8(m_data.at(int(p++))) : 0;
                value += (flag & sameBit) ? delta : -delta;
            } else if (!(flag & sameBit)) {
                value += s16(p);
                p += 2;
            }
            values[std::size_t(i)] = value;
        }
        return values;
    };
    std::vector<double> const xs = readCoordinates(2, 16);
    std::vector<double> const ys = readCoordinates(4, 32);
    int first = 0;
    for (int contour = 0; contour < contours; ++contour) {
        int const last = endPoints[std::size_t(contour)];
        int const count = last - first + 1;
        if (count < 2) {
            first = last + 1;
            continue;
        }
        auto pointAt = [&](int i) {
            int const k = first + ((i % count) + count) % count;
            return transform.map(QPointF(xs[std::size_t(k)], ys[std::size_t(k)]));
        };
        auto onCurve = [&](int i) {
            return (flags[std::size_t(first + ((i % count) + count) % count)] & 1) != 0;
        };
        // Start on an on-curve point, or on the midpoint of two off-curve points.
        int startIndex = 0;
        QPointF startPoint;
        bool found = false;
        for (int i = 0; i < count; ++i) {
            if (onCurve(i)) {
                startIndex = i;
                startPoint = pointAt(i);
                found = true;
                break;
            }
        }
        if (!found) {
            startPoint = (pointAt(0) + pointAt(1)) / 2.0;
            startIndex = 0;
        }
        path.moveTo(startPoint);
        QPointF control;
        bool haveControl = false;
        for (int step = 1; step <= count; ++step) {
            int const i = startIndex + step;
            QPointF const point = pointAt(i);
            if (onCurve(i)) {
                if (haveControl) {
                    path.quadTo(control, point);
                } else {
                    path.lineTo(point);
                }
                haveControl = false;
            } else {
                if (haveControl) {
                    QPointF const middle = (control + point) / 2.0;
                    path.quadTo(control, middle);
                }
                control = point;
                haveControl = true;
            }
        }
        if (haveControl) {
            path.quadTo(control, startPoint);
        }
        path.closeSubpath();
        first = last + 1;
    }
}

QPainterPath OutlineFont::textPath(QString const& text, double pixelSize, QPointF origin) const
{
    QPainterPath result;
    result.setFillRule(Qt::WindingFill);
    if (!isValid()) {
        return result;
    }
    double const scale = pixelSize / m_unitsPerEm;
    double x = 0.0;
    for (uint codePoint : text.toUcs4()) {
        quint16 const glyph = glyphIndex(codePoint);
        QTransform const place(scale, 0, 0, -scale, origin.x() + x, origin.y());
        result.addPath(place.map(glyphPath(glyph)));
        x += advanceWidth(glyph) * scale;
    }
    return result;
}

double OutlineFont::advance(QString const& text, double pixelSize) const
{
    if (!isValid()) {
        return 0.0;
    }
    double const scale = pixelSize / m_unitsPerEm;
    double x = 0.0;
    for (uint codePoint : text.toUcs4()) {
        x += advanceWidth(glyphIndex(codePoint)) * scale;
    }
    return x;
}

} // namespace zelkotool
