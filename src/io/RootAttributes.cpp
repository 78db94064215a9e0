#include "io/RootAttributes.h"

#include "io/ReadLimits.h"
#include "io/ReaderSupport.h"

#include <H5Cpp.h>
#include <charconv>
#include <cstdio>
#include <limits>
#include <optional>
#include <stdexcept>

namespace Tessaly {

namespace {

// Polygon gates are stored as "section:<x>,<y> polygon points".
const std::string polygonSuffix = " polygon points";

// "%f" without the locale: the application object switches the C locale to the user's, whose
// decimal separator may be a comma.
std::string formatFixed(double value)
{
    char text[400]; // the longest "%f" of a double has 309 digits before the point
    const auto result = std::to_chars(text, text + sizeof text, value, std::chars_format::fixed, 6);
    return std::string(text, result.ptr);
}

std::string stripPadding(std::string text, H5T_str_t padding)
{
    switch (padding) {
    case H5T_STR_NULLTERM:
        text.resize(std::min(text.find('\0'), text.size()));
        break;
    case H5T_STR_NULLPAD:
        while (!text.empty() && text.back() == '\0')
            text.pop_back();
        break;
    case H5T_STR_SPACEPAD:
        while (!text.empty() && (text.back() == ' ' || text.back() == '\0'))
            text.pop_back();
        break;
    default:
        break;
    }
    return text;
}

std::string readStringAttribute(const H5::Attribute& attribute)
{
    const H5::StrType type = attribute.getStrType();
    if (type.isVariableStr()) {
        H5::StrType memoryType(H5::PredType::C_S1, H5T_VARIABLE);
        memoryType.setCset(type.getCset());
        char* text = nullptr;
        attribute.read(memoryType, &text);
        std::string value = text ? std::string(text) : std::string();
        H5free_memory(text);
        return value;
    }
    // Fixed-length text comes in the attribute's own type, padding included; other writers use
    // null padding or space padding without a terminating null.
    if (const std::optional<std::string> refusal
        = memoryRefusal("a text of " + std::to_string(type.getSize()) + " bytes", type.getSize()))
        throw std::runtime_error(*refusal);
    std::string buffer(type.getSize(), '\0');
    attribute.read(type, buffer.data());
    return stripPadding(std::move(buffer), type.getStrpad());
}

std::optional<std::string> readScalarAttribute(const H5::Attribute& attribute, H5T_class_t typeClass)
{
    switch (typeClass) {
    case H5T_STRING:
        return readStringAttribute(attribute);
    case H5T_FLOAT: {
        double value = 0.0;
        attribute.read(H5::PredType::NATIVE_DOUBLE, &value);
        return formatFixed(value);
    }
    case H5T_ENUM: {
        int value = 0;
        attribute.read(H5::PredType::NATIVE_INT, &value);
        return std::to_string(value);
    }
    case H5T_INTEGER: {
        std::int64_t value = 0;
        attribute.read(H5::PredType::NATIVE_INT64, &value);
        return std::to_string(value);
    }
    default:
        return std::nullopt;
    }
}

// A float array of shape (n, 2) is a list of points; its text is "(x,y), (x,y), ...". When its key
// reads "<x feature>,<y feature> polygon points" it is also a polygon gate.
std::string readPointsAttribute(
    const H5::Attribute& attribute, const std::string& name, hsize_t rows, VQDMetadata& metadata)
{
    // The values, the vertices as doubles and their text of about 30 characters each.
    if (const std::optional<std::string> refusal = memoryRefusal(std::to_string(rows) + " points",
            saturatingProduct(rows, 2 * sizeof(float) + 2 * sizeof(double) + 32)))
        throw std::runtime_error(*refusal);
    std::vector<float> values(static_cast<std::size_t>(rows) * 2);
    if (!values.empty())
        attribute.read(H5::PredType::NATIVE_FLOAT, values.data());

    std::vector<std::pair<double, double>> vertices;
    vertices.reserve(static_cast<std::size_t>(rows));
    std::string text;
    for (std::size_t i = 0; i + 1 < values.size(); i += 2) {
        vertices.emplace_back(values[i], values[i + 1]);
        if (!text.empty())
            text += ", ";
        text += '(' + formatFixed(values[i]) + ',' + formatFixed(values[i + 1]) + ')';
    }

    const std::string key = name.substr(name.find(':') + 1);
    if (key.size() > polygonSuffix.size()
        && key.compare(key.size() - polygonSuffix.size(), polygonSuffix.size(), polygonSuffix) == 0) {
        const std::string features = key.substr(0, key.size() - polygonSuffix.size());
        const std::size_t comma = features.find(',');
        if (comma != std::string::npos)
            metadata.polygonFilters.push_back(
                { features.substr(0, comma), features.substr(comma + 1), std::move(vertices) });
    }
    return text;
}

// The text of one root attribute, or nothing when attributes of its kind are not kept.
std::optional<std::string> readAttribute(
    const H5::Attribute& attribute, const std::string& name, VQDMetadata& metadata)
{
    const H5T_class_t typeClass = attribute.getTypeClass();
    const H5::DataSpace space = attribute.getSpace();
    // An attribute without a value (null dataspace) has rank 0 as well but nothing to read.
    if (space.getSimpleExtentType() == H5S_SCALAR)
        return readScalarAttribute(attribute, typeClass);
    if (space.getSimpleExtentType() != H5S_SIMPLE || typeClass != H5T_FLOAT)
        return std::nullopt;
    const std::vector<hsize_t> dims = extentOf(space);
    if (dims.size() == 2 && dims[1] == 2 && name.find(':') != std::string::npos)
        return readPointsAttribute(attribute, name, dims[0], metadata);
    return std::nullopt;
}

void storeAttribute(VQDMetadata& metadata, const std::string& name, const std::string& value)
{
    metadata.allAttributes[name] = value;
    const std::size_t colon = name.find(':');
    if (colon == std::string::npos)
        return;
    if (VQDMetadata::TextMap* section = metadata.section(name.substr(0, colon)))
        (*section)[name.substr(colon + 1)] = value;
}

// One pass over the root's attributes. Each attribute is read inside its own guard: one that can't be
// read is reported with its position and the walk goes on. Nothing may leave the callback by an
// exception, since the library that calls it is C.
struct AttributeWalk
{
    const H5::Group& root;
    VQDMetadata& metadata;
    std::uint64_t limit = std::numeric_limits<std::uint64_t>::max();
    std::uint64_t index = 0;

    static herr_t visit(hid_t, const char* name, const H5A_info_t*, void* data) noexcept
    {
        auto* walk = static_cast<AttributeWalk*>(data);
        // A positive value ends the walk without an error.
        if (walk->index >= walk->limit)
            return 1;
        const std::uint64_t index = walk->index++;
        try {
            const H5::Attribute attribute = walk->root.openAttribute(name);
            const std::string fullName = attribute.getName();
            if (const std::optional<std::string> value = readAttribute(attribute, fullName, walk->metadata))
                storeAttribute(walk->metadata, fullName, *value);
        } catch (const H5::Exception& e) {
            reportReaderError(
                "Warning: failed to read attribute " + std::to_string(index) + ": ", e.getDetailMsg());
        } catch (const std::exception& e) {
            reportReaderError("Warning: failed to read attribute " + std::to_string(index) + ": ", e.what());
        } catch (...) {
            reportReaderError(
                "Warning: failed to read attribute " + std::to_string(index) + ": ", "unknown failure");
        }
        return 0;
    }
};

} // namespace

void readRootAttributes(const H5::Group& root, VQDMetadata& metadata)
{
    AttributeWalk walk { root, metadata };
    // Attributes kept in the object header itself (all of them in files of the oldest format) can
    // only be opened by a search from the start of the header, so reading them costs the square
    // of their number; past maxHeaderAttributes the rest is left unread. Those in dense storage
    // are found through an index and are all read.
    H5O_info_t info;
    herr_t infoStatus = -1;
    H5E_BEGIN_TRY
    {
        infoStatus = H5Oget_info2(root.getId(), &info, H5O_INFO_META_SIZE | H5O_INFO_NUM_ATTRS);
    }
    H5E_END_TRY;
    const bool inHeader = infoStatus < 0 || info.meta_size.attr.heap_size == 0;
    const hsize_t total = infoStatus < 0 ? 0 : info.num_attrs;
    if (inHeader)
        walk.limit = maxHeaderAttributes;
    // Opening attributes by index rebuilds the list of all attributes for every one of them,
    // which takes minutes for a file with tens of thousands; one pass over them takes
    // milliseconds. The order is creation order where the file records it, else the order in
    // which the file keeps them, which for a handful of attributes is again creation order.
    unsigned int tracked = 0;
    const hid_t properties = H5Gget_create_plist(root.getId());
    if (properties >= 0) {
        H5Pget_attr_creation_order(properties, &tracked);
        H5Pclose(properties);
    }
    const bool byCreation = (tracked & H5P_CRT_ORDER_TRACKED) != 0;
    hsize_t position = 0;
    herr_t status = -1;
    H5E_BEGIN_TRY
    {
        status = H5Aiterate2(root.getId(), byCreation ? H5_INDEX_CRT_ORDER : H5_INDEX_NAME,
            byCreation ? H5_ITER_INC : H5_ITER_NATIVE, &position, &AttributeWalk::visit, &walk);
    }
    H5E_END_TRY;
    if (status < 0)
        reportReaderError("Error reading metadata: ",
            "the list of attributes is damaged after " + std::to_string(walk.index) + " of them");
    else if (inHeader && total > maxHeaderAttributes)
        reportReaderError("Warning: ",
            "only the first " + std::to_string(maxHeaderAttributes) + " of the " + std::to_string(total)
                + " attributes in the file's root header are read");
}

} // namespace Tessaly
