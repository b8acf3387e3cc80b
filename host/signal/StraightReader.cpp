#include "host/signal/StraightReader.hpp"

#include "host/signal/ReadySpan.hpp"
#include "host/signal/StripSettings.hpp"
#include "ole/Aud/SampleCacheIterators.hpp"

#include <algorithm>
#include <cstddef>

namespace audlmd {

using Aud::Render::ReadySpan;

std::span<const float> StraightReader::read(std::int64_t position, std::span<float> room) {
    stand(position);
    for (std::size_t done = 0;; ++*reader_) {
        ReadySpan::await(*reader_);
        const ReadySpan span(*reader_);
        if (span.samples == nullptr) {
            reader_.reset();
            return {};
        }
        const std::span<float> rest = room.subspan(done);
        // The last sample of a segment is there, too.
        const auto count = static_cast<std::size_t>(std::min(span.length + 1, std::ssize(rest)));
        ReadySpan::advance(*reader_, static_cast<std::int64_t>(count) - 1);
        if (count == room.size())
            return {span.samples, count};
        std::copy_n(span.samples, count, rest.begin());
        done += count;
        if (done == room.size())
            return room;
    }
}

void StraightReader::stand(std::int64_t position) {
    if (reader_ && reader_->position() + 1 == position)
        ++*reader_;
    else
        reader_.emplace(settings_.cookie, position, settings_.wait, cache_, settings_.forwardArgument,
                        !settings_.wait, gearing_);
}

} // namespace audlmd
