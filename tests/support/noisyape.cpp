#include "noisyape.h"

#include <QtEndian>

#include <algorithm>
#include <cmath>

namespace {
constexpr quint32 blocksPerFrame = 73728;

/// Upper bounds of the symbols' shares in 65536.
constexpr quint32 shares[] = {0,     19578, 36160, 48417, 56323, 60899, 63265, 64435, 64971, 65232, 65351,
                              65416, 65447, 65466, 65476, 65482, 65485, 65488, 65490, 65491, 65492, 65493};
constexpr quint32 largestSymbol = 20;

template <typename Number>
void put(QByteArray& bytes, Number number)
{
    const Number little = qToLittleEndian(number);
    bytes.append(reinterpret_cast<const char*>(&little), sizeof little);
}

/// A range coder with carries.
class RangeCoder
{
public:
    void putSymbol(quint32 symbol)
    {
        normalise();
        narrow(m_range >> 16, shares[symbol], shares[symbol + 1] - shares[symbol]);
    }
    void putNumber(quint32 number, quint32 limit)
    {
        normalise();
        narrow(m_range / limit, number, 1);
    }
    QByteArray finish()
    {
        for (int i = 0; i < 5; ++i) {
            m_range = bottom;
            normalise();
        }
        return m_bytes + QByteArray(8, '\0');
    }

private:
    static constexpr quint32 top = 1U << 31;
    static constexpr quint32 bottom = top >> 8;

    void narrow(quint32 unit, quint32 low, quint32 share)
    {
        m_low += unit * low;
        m_range = unit * share;
    }
    void normalise()
    {
        for (; m_range <= bottom; m_range <<= 8) {
            const bool carry = (m_low & top) != 0;
            if (carry || m_low < 0xFFU << 23) {
                m_bytes.append(char(m_held + (carry ? 1 : 0)));
                m_bytes.append(m_pending, carry ? '\0' : '\xFF');
                m_pending = 0;
                m_held = quint8(m_low >> 23);
            } else {
                ++m_pending;
            }
            m_low = m_low << 8 & (top - 1);
        }
    }

    quint32 m_low = 0;
    quint32 m_range = top;
    quint8 m_held = 0;
    int m_pending = 0;
    QByteArray m_bytes;
};

/// Writes the values of one channel, in a unit that follows their size.
class Channel
{
public:
    void put(RangeCoder& coder, quint32 value)
    {
        const quint32 unit = std::max(m_sum >> 5, 1U);
        const quint32 units = std::min(value / unit, largestSymbol);
        coder.putSymbol(units);
        coder.putNumber(value % unit, unit);
        m_sum += (units * unit + value % unit + 1) / 2 - ((m_sum + 16) >> 5);
    }

private:
    quint32 m_sum = 16U << 10;
};

class Noise
{
public:
    quint32 next()
    {
        m_state = m_state * 1664525 + 1013904223;
        const double swell = 1 + 3 * std::pow(std::sin(m_time++ / 18000.0), 2);
        return quint32((m_state >> 8) / double(1U << 24) * 300 * swell);
    }

private:
    quint32 m_state = 1;
    int m_time = 0;
};

QByteArray frameOf(Noise& noise, quint32 blocks)
{
    RangeCoder coder;
    Channel channels[2];
    for (quint32 block = 0; block < blocks; ++block)
        for (Channel& channel : channels)
            channel.put(coder, noise.next());
    // The checksum is nobody's: players pass over it.
    QByteArray frame = QByteArray(4, '\x12') + coder.finish();
    frame.append((4 - frame.size() % 4) % 4, '\0');
    for (int word = 0; word < frame.size(); word += 4)
        std::reverse(frame.begin() + word, frame.begin() + word + 4);
    return frame;
}
} // namespace

QByteArray Fixtures::noisyApe(int milliseconds)
{
    const auto blocks = quint32(qint64(milliseconds) * 44100 / 1000);
    const quint32 frames = (blocks + blocksPerFrame - 1) / blocksPerFrame;
    const quint32 finalBlocks = blocks - (frames - 1) * blocksPerFrame;
    Noise noise;
    QByteArray table;
    QByteArray audio;
    for (quint32 frame = 0; frame < frames; ++frame) {
        put<quint32>(table, 52 + 24 + 4 * frames + quint32(audio.size()));
        audio += frameOf(noise, frame + 1 == frames ? finalBlocks : blocksPerFrame);
    }
    QByteArray ape("MAC ");
    put<quint16>(ape, 3990);
    put<quint16>(ape, 0);
    for (const quint32 number : {52u, 24u, 4 * frames, 0u, quint32(audio.size()), 0u, 0u})
        put<quint32>(ape, number);
    ape.append(QByteArray(16, '\0')); // no checksum
    put<quint16>(ape, 1000);
    put<quint16>(ape, 0x20);
    for (const quint32 number : {blocksPerFrame, finalBlocks, frames})
        put<quint32>(ape, number);
    put<quint16>(ape, 16);
    put<quint16>(ape, 2);
    put<quint32>(ape, 44100);
    return ape + table + audio;
}
