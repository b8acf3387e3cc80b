// How libFuzzer changes the inputs of the timelines: mostly by a value of the JSON, so that the text stays
// JSON and reaches what lies behind the parser.

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* bytes, std::size_t size, std::size_t mostBytes);

namespace {

using Json = nlohmann::json;

void collect(Json& value, std::vector<Json*>& values) {
    values.push_back(&value);
    if (value.is_structured())
        for (Json& child : value)
            collect(child, values);
}

Json anyValue(std::minstd_rand& random) {
    static const Json values =
        Json::parse(R"([null, true, false, 0, -1, 1, 25, 29.97, 0.5, 1e-308, -1e308, 1e18,
        9223372036854775807, 18446744073709551615, 1152921504606846976, -1152921504606846976, 8796093022208, 48000,
        "", "-inf", "1.5s", "A.wav", "file:///B%20c.wav", "audio", "NaN", "linear", "filtering", "none", "power", "peak:1k:3:1e-9",
        "highpass:30", [], {}, [[0, 0]], [[1, -20], [1, "-inf"]], [[1, 0], [0, 1]]])");
    return values[random() % values.size()];
}

void changeNumber(Json& value, std::minstd_rand& random) {
    constexpr double factors[] = {-1.0, 0.5, 2.0, 1.001, 1000.0, 1e9};
    if (value.is_number_integer() && random() % 2 == 0)
        value = static_cast<std::int64_t>(value.get<std::uint64_t>() + random() % 5 - 2);
    else
        value = value.get<double>() * factors[random() % std::size(factors)];
}

void changeText(Json& value) {
    std::string text = value.get<std::string>();
    const std::size_t size = text.size();
    text.resize(size + 16);
    text.resize(LLVMFuzzerMutate(reinterpret_cast<std::uint8_t*>(text.data()), size, text.size()));
    value = text;
}

void changeOne(Json& root, std::minstd_rand& random) {
    std::vector<Json*> values;
    collect(root, values);
    Json& value = *values[random() % values.size()];
    const Json other = *values[random() % values.size()];
    const auto place =
        static_cast<std::ptrdiff_t>(value.is_structured() && !value.empty() ? random() % value.size() : 0);
    switch (random() % 5) {
    case 0:
        value = anyValue(random);
        return;
    case 1:
        value = other;
        return;
    case 2:
        if (value.is_structured() && !value.empty())
            value.erase(std::next(value.begin(), place));
        return;
    case 3:
        if (value.is_array())
            value.insert(value.begin() + (value.empty() ? 0 : place), other);
        else if (value.is_object() && !value.empty())
            std::next(value.begin(), place).value() = other;
        return;
    default:
        if (value.is_number())
            changeNumber(value, random);
        else if (value.is_string())
            changeText(value);
    }
}

} // namespace

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* bytes, std::size_t size, std::size_t mostBytes,
                                               unsigned int seed) {
    std::minstd_rand random(seed);
    Json root = Json::parse(bytes, bytes + size, nullptr, false);
    if (root.is_discarded() || random() % 4 == 0)
        return LLVMFuzzerMutate(bytes, size, mostBytes);
    for (auto changes = random() % 3 + 1; changes > 0; --changes)
        changeOne(root, random);
    const std::string text = root.dump(-1, ' ', false, Json::error_handler_t::replace);
    if (text.size() > mostBytes)
        return LLVMFuzzerMutate(bytes, size, mostBytes);
    std::ranges::copy(text, bytes);
    return text.size();
}
