#pragma once

#include <QtGlobal>

#include <cmath>

namespace simulator
{

/// Numbers that look drawn by lot and are the same for the same key: nobody's draw depends on whether or in which order
/// others draw.
namespace chance
{

constexpr quint64 mixed(quint64 key)
{
    key += 0x9e3779b97f4a7c15ULL;
    key = (key ^ (key >> 30)) * 0xbf58476d1ce4e5b9ULL;
    key = (key ^ (key >> 27)) * 0x94d049bb133111ebULL;
    return key ^ (key >> 31);
}

constexpr quint64 mixed(quint64 key, quint64 further)
{
    return mixed(mixed(key) ^ further);
}

/// Above 0 and below 1.
inline double uniform(quint64 key)
{
    return (static_cast<double>(mixed(key) >> 11) + 0.5) * 0x1p-53;
}

/// With the mean 1.
inline double exponential(quint64 key)
{
    return -std::log(uniform(key));
}

/// With the mean 0 and the standard deviation 1.
inline double normal(quint64 key)
{
    constexpr double TwoPi = 6.283185307179586;
    return std::sqrt(2 * exponential(key)) * std::cos(TwoPi * uniform(mixed(key, 1)));
}

} // namespace chance

} // namespace simulator
