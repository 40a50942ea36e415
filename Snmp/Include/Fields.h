#ifndef SNMP_FIELDS_H
#define SNMP_FIELDS_H

namespace SNMP {

/// An enumerated field of a record. It holds whatever number was stored in it, and every copy of it is
/// normalised: a number from LOW to HIGH is kept, any other becomes FALLBACK. Copying a copy changes nothing.
template <int LOW, int HIGH, int FALLBACK>
class TRangedField {
public:
    constexpr TRangedField(int raw) noexcept : m_value(raw) {}
    constexpr TRangedField(TRangedField const & other) noexcept : m_value(Normalise(other.m_value)) {}
    constexpr TRangedField & operator=(TRangedField const & other) noexcept
    {
        m_value = Normalise(other.m_value);
        return *this;
    }
    constexpr TRangedField & operator=(int raw) noexcept
    {
        m_value = raw;
        return *this;
    }
    constexpr operator int() const noexcept { return m_value; }

    /// The number as it is, for a reader that stores it as it comes.
    constexpr int & Raw() noexcept { return m_value; }
    /// What a copy would hold, in place.
    constexpr void Normalise() noexcept { m_value = Normalise(m_value); }
    static constexpr int Normalise(int raw) noexcept
    {
        // Unsigned, so that what lies below LOW wraps to the far end.
        constexpr unsigned int span = static_cast<unsigned int>(HIGH) - static_cast<unsigned int>(LOW);
        return static_cast<unsigned int>(raw) - static_cast<unsigned int>(LOW) <= span ? raw : FALLBACK;
    }

private:
    int m_value;
};

} // namespace SNMP

#endif
