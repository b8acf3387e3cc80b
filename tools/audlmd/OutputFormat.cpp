#include "tools/audlmd/OutputFormat.hpp"

namespace audlmd::command {

std::string outputTypeName(FormatId id, bool summing) {
    const std::string pointer = std::string(outputFormat(id).typeName) + "*";
    return summing ? "Aud::Render::SummingOutputSampleIterator<" + pointer + ">" : pointer;
}

} // namespace audlmd::command
