#pragma once

#include "host/mix/OpenStrip.hpp"
#include "host/services/Threads.hpp"

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <memory>
#include <stop_token>
#include <string>
#include <thread>
#include <unordered_map>
#include <vector>

namespace audlmd {

/// Opens and closes strips on a thread of its own, so that a mixer that renders does not wait for files.
/// Strips are numbers.
class StripOpener {
public:
    /// Opens a strip; called on the thread. Where it throws, the text of the exception is kept.
    using Open = std::function<std::unique_ptr<OpenStrip>(std::size_t strip)>;

    struct Opened {
        /// Null where opening failed.
        std::unique_ptr<OpenStrip> strip;
        std::string failure;
    };

    /// Starts the thread.
    explicit StripOpener(Open open);
    /// Closes all strips.
    ~StripOpener();
    StripOpener(const StripOpener&) = delete;
    StripOpener& operator=(const StripOpener&) = delete;

    // For one thread, which renders.

    /// Requests a strip that is not open. Strips are opened in the order of the requests.
    void open(std::size_t strip);
    /// What became of a request: null while the strip is not open yet. Valid until close().
    Opened* find(std::size_t strip);
    /// The same, but waits until the strip is open. Null after callOff().
    Opened* wait(std::size_t strip);
    /// Withdraws the request, or closes the strip.
    void close(std::size_t strip);

    /// Opens nothing more and ends all waiting. For any thread.
    void callOff();

private:
    void serve(const std::stop_token& stop);
    /// Made by who requests, because the thread has nobody to tell that it has no memory.
    struct Request {
        std::size_t strip = 0;
        std::unique_ptr<Opened> opened;
    };

    void openNow(Request& request) const noexcept;
    /// Leaves the request's strip to the caller where nobody wants it any longer.
    void finish(Request& request) AUDLMD_REQUIRES(mutex_);

    Open open_;
    Mutex mutex_;
    std::condition_variable_any requested_;
    std::condition_variable opened_;
    std::deque<Request> requests_ AUDLMD_GUARDED_BY(mutex_);
    /// Null while the strip is not open yet.
    std::unordered_map<std::size_t, std::unique_ptr<Opened>> strips_ AUDLMD_GUARDED_BY(mutex_);
    std::vector<std::unique_ptr<Opened>> closed_ AUDLMD_GUARDED_BY(mutex_);
    bool isCalledOff_ AUDLMD_GUARDED_BY(mutex_) = false;
    /// Declared last: the thread ends before anything that it uses.
    std::jthread thread_;
};

} // namespace audlmd
