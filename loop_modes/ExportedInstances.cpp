// What the host calls by name but no render function calls out of line.

#include "ole/Aud/Aud__RenderIterators"

namespace Aud {

SampleCache::ForwardIterator::ForwardIterator(const ForwardIterator&) = default;
SampleCache::ReverseIterator::ReverseIterator(const ReverseIterator&) = default;

template float Filter::MultiBandBiquad<5U>::processSample(float);

namespace {

[[gnu::used]] constexpr auto readForward = &SampleCache::ForwardIterator::operator*;
[[gnu::used]] constexpr auto readReverse = &SampleCache::ReverseIterator::operator*;

} // namespace
} // namespace Aud
