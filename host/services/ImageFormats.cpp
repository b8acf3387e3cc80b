#include "host/services/ImageFormats.hpp"

#include "contract/LoadServices.hpp"
#include "host/services/Immortal.hpp"

#include <map>
#include <mutex>

namespace audlmd {
namespace {

/// Guarded by one lock, because libraries may be loaded and unloaded on different threads.
struct Announcements {
    std::mutex mutex;
    /// Holds no number with a count of 0.
    std::map<std::uint32_t, std::size_t> countByNumber;
};

/// Made at the first announcement, which is a static initialiser of some library. Never destroyed, because
/// libraries withdraw their announcements while the process ends.
Announcements& announcements() {
    static Immortal<Announcements> instance;
    return instance.object;
}

} // namespace

std::size_t announcementsOfImageFormat(std::uint32_t number) {
    const std::lock_guard lock(announcements().mutex);
    const auto found = announcements().countByNumber.find(number);
    return found == announcements().countByNumber.end() ? 0 : found->second;
}

std::size_t announcedImageFormats() {
    const std::lock_guard lock(announcements().mutex);
    return announcements().countByNumber.size();
}

} // namespace audlmd

namespace Orv::Image {

/// The constructor announces and the destructor withdraws, so an announcement lasts as long as the static
/// object of the library.
FormatUID::FormatUID(std::uint32_t number) : number_(number) {
    const std::lock_guard lock(audlmd::announcements().mutex);
    ++audlmd::announcements().countByNumber[number];
}

FormatUID::~FormatUID() {
    const std::lock_guard lock(audlmd::announcements().mutex);
    const auto found = audlmd::announcements().countByNumber.find(number_);
    // The constructor of this object has made the entry, so the entry is there.
    if (--found->second == 0)
        audlmd::announcements().countByNumber.erase(found);
}

} // namespace Orv::Image
