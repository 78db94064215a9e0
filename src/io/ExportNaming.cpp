#include "io/ExportNaming.h"

#include <cctype>

namespace Tessaly {

namespace {

bool endsWithVqd(const std::string& name)
{
    static const std::string ending = ".vqd";
    if (name.size() < ending.size())
        return false;
    for (std::size_t i = 0; i < ending.size(); ++i) {
        const char c = name[name.size() - ending.size() + i];
        if (std::tolower(static_cast<unsigned char>(c)) != ending[i])
            return false;
    }
    return true;
}

} // namespace

std::string exportFileName(const std::string& sourceFileName, ExportFormat format)
{
    std::string name = sourceFileName;
    if (format != ExportFormat::MeasurementFile) {
        if (endsWithVqd(name))
            name.resize(name.size() - 4);
        name += format == ExportFormat::Table ? ".tsv" : ".avi";
    }
    return "TSYexport_" + name;
}

std::string uniqueExportPath(const std::string& folder, const std::string& fileName,
    const std::function<bool(const std::string&)>& taken)
{
    const std::string prefix = folder.empty() || folder.back() == '/' ? folder : folder + '/';
    std::string path = prefix + fileName;
    const std::size_t dot = fileName.rfind('.');
    const std::string base = dot == std::string::npos ? fileName : fileName.substr(0, dot);
    const std::string suffix = dot == std::string::npos ? std::string() : fileName.substr(dot);
    for (int number = 2; taken(path); ++number)
        path = prefix + base + '_' + std::to_string(number) + suffix;
    return path;
}

} // namespace Tessaly
