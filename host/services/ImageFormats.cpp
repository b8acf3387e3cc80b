#include "host/services/ImageFormats.hpp"

#include "contract/LoadServices.hpp"
#include "host/services/Immortal.hpp"
#include "host/services/Threads.hpp"

#include <map>

namespace audlmd {
namespace {

/// Guarded, because libraries may be loaded and unloaded on different threads.
struct Announcements {
    Mutex mutex;
    /// Holds no number with a count of 0.
    std::map<std::uint32_t, std::size_t> countByNumber AUDLMD_GUARDED_BY(mutex);
};

/// Made at the first announcement, which is a static initialiser of some library. Never destroyed, because
/// libraries withdraw their announcements while the process ends.
Announcements& announcements() {
    static Immortal<Announcements> instance;
    return instance.object;
}

} // namespace

std::size_t announcementsOfImageFormat(std::uint32_t number) {
    Announcements& all = announcements();
    const Lock lock(all.mutex);
    const auto found = all.countByNumber.find(number);
    return found == all.countByNumber.end() ? 0 : found->second;
}

std::size_t announcedImageFormats() {
    Announcements& all = announcements();
    const Lock lock(all.mutex);
    return all.countByNumber.size();
}

} // namespace audlmd

namespace Orv::Image {

/// The constructor announces and the destructor withdraws, so an announcement lasts as long as the static
/// object of the library.
FormatUID::FormatUID(std::uint32_t number) : number_(number) {
    audlmd::Announcements& all = audlmd::announcements();
    const audlmd::Lock lock(all.mutex);
    ++all.countByNumber[number];
}

FormatUID::~FormatUID() {
    audlmd::Announcements& all = audlmd::announcements();
    const audlmd::Lock lock(all.mutex);
    const auto found = all.countByNumber.find(number_);
    // The constructor of this object has made the entry, so the entry is there.
    if (--found->second == 0)
        all.countByNumber.erase(found);
}

} // namespace Orv::Image
