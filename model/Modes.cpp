#include "model/Model.hpp"

namespace audlmd::model {

bool isValid(unsigned int code) {
    const Digits digits(code);
    return code < 2048 && digits.level != 3 && digits.conversion != 3 && digits.middle < 12;
}

const std::vector<unsigned int>& registrationOrder() {
    static const std::vector<unsigned int> order = [] {
        std::vector<unsigned int> codes;
        // Each place of the sequence, read as a number of mixed base: the fastest digit first.
        for (unsigned int place = 0; place < 864; ++place) {
            unsigned int rest = place;
            unsigned int code = 0;
            const auto take = [&](unsigned int base, unsigned int weight) {
                code += rest % base * weight;
                rest /= base;
            };
            take(2, 1024);
            take(3, 256);
            take(2, 128);
            take(3, 32);
            take(12, 2);
            take(2, 1);
            codes.push_back(code);
        }
        return codes;
    }();
    return order;
}

} // namespace audlmd::model
