#include "tests/listio/namelist_support.h"

#include <cstring>

namespace vrntest {

ArrayDescriptor DescribeArray(void* base, int32_t elementLength, uint8_t dataType,
                              std::vector<std::pair<int32_t, int32_t>> bounds) {
    ArrayDescriptor d;
    RTDArray* head = d.head();
    head->base_ptr = reinterpret_cast<uintptr_t>(base);
    head->header.dscr_type = RTD_ARRAY;
    head->header.data_type = dataType;
    head->header.version = sizeof(void*) == 8 ? RTD_VERSION_64BIT | 1 : 1;
    head->element_len = elementLength;
    int32_t rank = static_cast<int32_t>(bounds.size());
    head->rank = rank;
    int32_t multiplier = elementLength;
    for (int32_t i = 0; i < rank; ++i) {
        // The table is held in reverse: its last entry is dimension 1.
        RTDDimension& entry = head->dims[rank - 1 - i];
        entry.low_bound = bounds[static_cast<size_t>(i)].first;
        entry.extent = bounds[static_cast<size_t>(i)].second;
        entry.multiplier = multiplier;
        multiplier *= entry.extent;
    }
    return d;
}

Group& Group::Scalar(const std::string& name, void* address, uint32_t type, int32_t kind, int32_t length) {
    names_.push_back(name);
    members_.push_back(VrnNamelistMember{names_.back().data(), address, nullptr, nullptr,
                                         static_cast<uint32_t>(name.size()), type, kind, length});
    return *this;
}

Group& Group::Array(const std::string& name, const void* rtd, uint32_t type, int32_t kind, int32_t length) {
    names_.push_back(name);
    members_.push_back(VrnNamelistMember{names_.back().data(), nullptr, rtd, nullptr,
                                         static_cast<uint32_t>(name.size()), type, kind, length});
    return *this;
}

Group& Group::Derived(const std::string& name, void* address, const VrnNamelistType* type, const void* rtd) {
    names_.push_back(name);
    members_.push_back(VrnNamelistMember{names_.back().data(), address, rtd, type,
                                         static_cast<uint32_t>(name.size()), 6, 0, 0});
    return *this;
}

const VrnNamelistGroup* Group::record() {
    storage_.assign(sizeof(VrnNamelistGroup) + members_.size() * sizeof(VrnNamelistMember), 0);
    auto* group = reinterpret_cast<VrnNamelistGroup*>(storage_.data());
    group->name = name_.data();
    group->nameLength = static_cast<uint32_t>(name_.size());
    group->count = static_cast<uint32_t>(members_.size());
    std::memcpy(group->members, members_.data(), members_.size() * sizeof(VrnNamelistMember));
    return group;
}

std::string WriteInternal(Group& group, uint32_t recordLength, uint32_t options, int32_t* iostat,
                          Specifiers* specifiers) {
    constexpr uint32_t kRecords = 64;
    std::string area(static_cast<size_t>(recordLength) * kRecords, '\x01');
    InternalFile file{reinterpret_cast<uintptr_t>(area.data()), area.size(), recordLength};
    InternalFile* address = &file;
    LocalContext* context =
        _vrnBeginIO(&address, NamelistWrite | VRN_FLAG_INTERNAL, specifiers != nullptr ? specifiers->list() : nullptr,
                    options, iostat, 0, const_cast<VrnNamelistGroup*>(group.record()));
    _vrnEndIO(context);
    return InternalRecords(area.data(), recordLength, kRecords);
}

int32_t ReadInternal(Group& group, const std::string& records, uint32_t options, Specifiers* specifiers) {
    // Records of the length of the longest line, blank-padded.
    std::vector<std::string> lines;
    size_t start = 0, longest = 1;
    while (start <= records.size()) {
        size_t end = records.find('\n', start);
        if (end == std::string::npos) end = records.size();
        lines.push_back(records.substr(start, end - start));
        longest = std::max(longest, end - start);
        start = end + 1;
    }
    std::string area;
    for (auto& line : lines) area += line + std::string(longest - line.size(), ' ');
    InternalFile file{reinterpret_cast<uintptr_t>(area.data()), area.size(), static_cast<uint32_t>(longest)};
    InternalFile* address = &file;
    int32_t iostat = 0;
    LocalContext* context =
        _vrnBeginIO(&address, NamelistRead | VRN_FLAG_INTERNAL, specifiers != nullptr ? specifiers->list() : nullptr,
                    options, &iostat, 0, const_cast<VrnNamelistGroup*>(group.record()));
    _vrnEndIO(context);
    return iostat;
}

int32_t WriteUnit(int32_t unit, Group& group, uint32_t options, Specifiers* specifiers) {
    int32_t iostat = 0;
    LocalContext* context = _vrnBeginIO(&unit, NamelistWrite, specifiers != nullptr ? specifiers->list() : nullptr,
                                        options, &iostat, 0, const_cast<VrnNamelistGroup*>(group.record()));
    _vrnEndIO(context);
    return iostat;
}

int32_t ReadUnit(int32_t unit, Group& group, uint32_t options, Specifiers* specifiers) {
    int32_t iostat = 0;
    LocalContext* context = _vrnBeginIO(&unit, NamelistRead, specifiers != nullptr ? specifiers->list() : nullptr,
                                        options, &iostat, 0, const_cast<VrnNamelistGroup*>(group.record()));
    _vrnEndIO(context);
    return iostat;
}

}  // namespace vrntest
