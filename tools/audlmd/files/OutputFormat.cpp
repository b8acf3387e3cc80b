#include "tools/audlmd/files/OutputFormat.hpp"

#include "tools/audlmd/CommandError.hpp"

namespace audlmd::command {
namespace {

template <unsigned int Bits, unsigned int Bytes, Aud::eDataAlignment Alignment, Aud::eDataSigned Signed,
          Aud::eDataRepresentation Representation>
std::string
nameOf(std::type_identity<Aud::Sample<Bits, Bytes, Alignment, Signed, Representation>*> /*type*/) {
    return "Aud::Sample<" + std::to_string(Bits) + ", " + std::to_string(Bytes) +
           (Alignment == Aud::ePacked ? ", ePacked" : ", eLowBytes") +
           (Signed == Aud::eSigned ? ", eSigned" : ", eUnsigned") +
           (Representation == Aud::eInteger ? ", eInteger>*" : ", eFloat>*");
}

template <class Pointer>
std::string nameOf(std::type_identity<Aud::Render::Summing<Pointer>> /*type*/) {
    return "Aud::Render::SummingOutputSampleIterator<" + nameOf(std::type_identity<Pointer>()) + ">";
}

} // namespace

FormatId parseFormat(std::string_view text, std::string_view option) {
    std::string names;
    for (const OutputFormat& format : outputFormats) {
        if (format.name == text)
            return format.id;
        names += (names.empty() ? "" : ", ") + std::string(format.name);
    }
    throw CommandError(std::string(option) + ": '" + std::string(text) + "' is not a format; use one of " +
                       names);
}

std::string outputTypeName(FormatId id, bool summing) {
    std::string name;
    withOutputType(id, summing, [&name](auto type) { name = nameOf(type); });
    return name;
}

} // namespace audlmd::command
