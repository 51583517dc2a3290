// _vrndmprtd: a descriptor written out field by field on standard error, for people
// looking into what compiled code passed.
#include <cinttypes>
#include <cstddef>
#include <cstdio>
#include <string>

#include "core/export.h"
#include "desc/cfi.h"
#include "desc/rtd.h"
#include "transport/transport.h"

namespace {

constexpr int kPointerDigits = 8;
constexpr int kMaxDimensionsShown = 22;
constexpr int kValueIndent = 21;

// Collects the text and writes it with one call, so that the dump is not interleaved.
struct Out {
    std::string text;

    template <typename... Args>
    void Format(const char* format, Args... args) {
        char piece[512];
        int length = std::snprintf(piece, sizeof piece, format, args...);
        if (length > 0) text.append(piece, static_cast<size_t>(length < 511 ? length : 511));
    }
    void Pointer(const char* before, uintptr_t pointer, const char* after = "\n") {
        Format("%s0x%.*lx%s", before, kPointerDigits, static_cast<unsigned long>(pointer), after);
    }
};

std::string Indent(int columns) {
    if (columns > 255) columns %= 255;
    return std::string(static_cast<size_t>(columns), ' ');
}

// Words of memory, four to a line; continuation lines carry the indent.
void MemoryDump(Out& out, uintptr_t address, int32_t length, int indent) {
    if (address == 0 || length <= 0) {
        out.text += '\n';
        return;
    }
    const auto* bytes = reinterpret_cast<const unsigned char*>(address);
    int32_t words = (length + 3) / 4;
    for (int32_t i = 0; i < words; ++i) {
        uint32_t word = 0;
        int32_t take = length - 4 * i < 4 ? length - 4 * i : 4;
        std::memcpy(&word, bytes + 4 * i, static_cast<size_t>(take));
        out.Format("0x%08x", word);
        if (i + 1 == words) {
            out.text += '\n';
        } else if ((i + 1) % 4 == 0) {
            out.text += '\n' + Indent(indent);
        } else {
            out.text += ' ';
        }
    }
}

const char* DescriptorTypeName(unsigned type) {
    switch (type) {
    case RTD_SCALAR: return "scalar";
    case RTD_SCALAR_CHAR: return "scalar_char";
    case RTD_ARRAY: return "array";
    default: return nullptr;
    }
}

const char* DataTypeName(unsigned type) {
    switch (type) {
    case 0: return "invalid";
    case 1: return "derived";
    case 2: return "character";
    case 13: return "integer";
    case 14: return "real";
    case 15: return "complex";
    case 16: return "logical";
    case 18: return "byte";
    case 32: return "vector(integer(1))";
    case 33: return "vector(integer(2))";
    case 34: return "vector(integer(4))";
    case 35: return "vector(integer(8))";
    case 36: return "vector(unsigned(1))";
    case 37: return "vector(unsigned(2))";
    case 38: return "vector(unsigned(4))";
    case 39: return "vector(unsigned(8))";
    case 40: return "vector(real(4))";
    case 41: return "vector(real(8))";
    case 51: return "vector(pixel)";
    case 73: return "vector32(real(8))";
    default: return nullptr;
    }
}

void Header(Out& out, const RTDHeader& header) {
    out.Format("header.dscr_type = %d ( ", header.dscr_type);
    if (const char* name = DescriptorTypeName(header.dscr_type)) out.text += name; else out.Format("0x%02x", header.dscr_type);
    out.text += " )\n";
    out.Format("header.data_type = %d ( ", header.data_type);
    if (const char* name = DataTypeName(header.data_type)) out.text += name; else out.Format("0x%02x", header.data_type);
    out.text += " )\n";
    out.Format("header.flags = 0x%02x ( ", header.flags);
    const struct {
        unsigned bit;
        const char* name;
    } flags[] = {{0x80, "is_allocated"}, {0x40, "is_associated"}, {0x20, "ok_to_deallocate"}, {0x10, "is_contiguous"},
                 {0x08, "last_io_call"}, {0x04, "is_padded"},     {0x02, "is_autodbl"}};
    for (auto flag : flags) {
        if (header.flags & flag.bit) out.Format("%s ", flag.name);
    }
    out.text += " )\n";
    out.Format("header.version = 0x%02x ( %s version %d )\n", header.version,
               (header.version & RTD_VERSION_64BIT) ? "64-bit" : "32-bit", header.version & 0x7F);
}

void ArrayInformation(Out& out, const RTD* rtd, int indent) {
    const auto* array = reinterpret_cast<const RTDArray*>(rtd);
    std::string prefix = Indent(indent);
    out.Format("%srank = %d\n", prefix.c_str(), array->rank);
    out.Format("%selement_len = %ld\n", prefix.c_str(), static_cast<long>(array->element_len));
    out.Format("%srel_virtual_org = %ld\n", prefix.c_str(), static_cast<long>(array->rel_virtual_org));
    int32_t shown = array->rank < kMaxDimensionsShown ? array->rank : kMaxDimensionsShown;
    for (int32_t i = 0; i < shown; ++i) {
        RTDDimension d = DimensionEntry(rtd, i);
        out.Format("%s  Dimension %ld:  low_bound=%ld  extent=%ld  multiplier=%ld\n", prefix.c_str(), static_cast<long>(i),
                   static_cast<long>(d.low_bound), static_cast<long>(d.extent), static_cast<long>(d.multiplier));
    }
}

void Typeinfo(Out& out, uintptr_t address, int indent) {
    if (address == 0) return;
    RTDTypeinfo t = ReadField<RTDTypeinfo>(reinterpret_cast<const void*>(address));
    std::string p = Indent(indent);
    const char* s = p.c_str();
    out.Format("%s---- Typeinfo: (0x%.*lx) ----\n", s, kPointerDigits, static_cast<unsigned long>(address));
    auto text = [](uintptr_t at) { return at != 0 ? reinterpret_cast<const char*>(at) : "(null)"; };
    out.Format("%s  name = %s\n%s  mangled_name = %s\n", s, text(t.name), s, text(t.mangled_name));
    out.Format("%s  parent typeinfo = 0x%.*lx\n", s, kPointerDigits, static_cast<unsigned long>(t.parent));
    Typeinfo(out, t.parent, indent + 4);
    out.Format("%s  dt_descriptor = 0x%.*lx\n", s, kPointerDigits, static_cast<unsigned long>(t.dt_descriptor));
    out.Format("%s  dt_param_descriptor = 0x%.*lx\n", s, kPointerDigits, static_cast<unsigned long>(t.dt_param_descriptor));
    out.Format("%s  template typeinfo = 0x%.*lx\n", s, kPointerDigits, static_cast<unsigned long>(t.template_typeinfo));
    Typeinfo(out, t.template_typeinfo, indent + 4);
    out.Format("%s  flags = 0x%08x ( ", s, t.flags);
    if (t.flags & 1) out.text += "has_parent ";
    if (t.flags & 2) out.text += "has_final ";
    if (t.flags & 4) out.text += "contains_final ";
    out.text += " )\n";
    out.Format("%s  final_proc_index = %d\n%s  copy_proc_index = %d\n%s  init_proc_index = %d\n"
               "%s  expr_update_proc_index = %d\n",
               s, t.final_proc_index, s, t.copy_proc_index, s, t.init_proc_index, s, t.expr_update_proc_index);
    out.Format("%s-- End Typeinfo: (0x%.*lx) --\n", s, kPointerDigits, static_cast<unsigned long>(address));
}

void Vft(Out& out, uintptr_t address) {
    if (address == 0) return;
    RTDVft vft = ReadField<RTDVft>(reinterpret_cast<const void*>(address));
    out.Pointer("  base_ptr = ", vft.base_ptr);
    out.Pointer("  typeinfo = ", vft.typeinfo);
    Typeinfo(out, vft.typeinfo, 4);
}

void TypeParameters(Out& out, uintptr_t address) {
    if (address == 0) return;
    const auto* record = reinterpret_cast<const unsigned char*>(address);
    int64_t count = ReadField<int64_t>(record);
    out.Format("  count = %lld\n", static_cast<long long>(count));
    for (int64_t i = 1; i <= count; ++i) {
        int64_t value = ReadField<int64_t>(record + 8 * i);
        out.Format("  typeparams[%d] = %lld (0x%016llx)\n", static_cast<int>(i), static_cast<long long>(value),
                   static_cast<unsigned long long>(value));
    }
}

void V2Fields(Out& out, const RTD* rtd) {
    const unsigned char* fields = get_v2_fields(rtd);
    RTDV2Fields v2{};
    std::memcpy(&v2, fields, offsetof(RTDV2Fields, vft_ptr));
    bool typed = (v2.flagsA & RTD_HAS_VFT_TPT_TPV) != 0;
    if (typed) std::memcpy(&v2, fields, sizeof v2);
    out.Format("flagsA = 0x%08x ( ", v2.flagsA);
    if (v2.flagsA & RTD_HAS_VFT_TPT_TPV) out.text += "has_vft_tpt_tpv ";
    if (v2.flagsA & RTD_HAS_UNKNOWN_TPT) out.text += "has_unknown_tpt ";
    if (v2.flagsA & RTD_HAS_LEN_PARM) out.text += "has_len_parm ";
    if (v2.flagsA & RTD_PASS_DSCR_ARG) out.text += "pass_dscr_arg";
    out.text += " )\n";
    out.Format("reserved = %d ( 0x%08x )\n", static_cast<int>(v2.reserved), v2.reserved);
    out.Pointer("reserved_ptr = ", v2.reserved_ptr);
    out.Pointer("chain_ptr = ", v2.chain_ptr);
    if (!typed) return;
    out.Pointer("vft_addr = ", v2.vft_ptr);
    Vft(out, v2.vft_ptr);
    out.Pointer("tpt_addr = ", v2.tpt_ptr);
    TypeParameters(out, v2.tpt_ptr);
    out.Pointer("tpv_addr = ", v2.tpv_ptr);
    TypeParameters(out, v2.tpv_ptr);
}

// A C type code in Fortran's words: INTEGER(4), COMPLEX(8), CHARACTER, C_PTR.
std::string TypeName(CFI_type_t type) {
    switch (type) {
    case CFI_type_struct: return "struct";
    case CFI_type_cptr: return "C_PTR";
    case CFI_type_cfunptr: return "C_FUNPTR";
    case CFI_type_other: return "other";
    default: break;
    }
    if (!cfi::Facts(type).known) return "unknown";
    static constexpr const char* kCategories[] = {"", "INTEGER", "LOGICAL", "REAL", "COMPLEX", "CHARACTER",
                                                  "", "", "", "BYTE"};
    std::string name = kCategories[cfi::Category(type)];
    if (cfi::Category(type) != CFI_category_character && cfi::Category(type) != CFI_category_byte) name += "(" + std::to_string(cfi::Kind(type)) + ")";
    return name;
}

}  // namespace

VRN_EXPORT void _vrndmprtd(const void* descriptor, int32_t id) {
    Out out;
    if (descriptor == nullptr) {
        out.Format("[%d] Descriptor not found.\n", id);
    } else {
        const auto* rtd = static_cast<const RTD*>(descriptor);
        auto address = reinterpret_cast<uintptr_t>(descriptor);
        out.Format("[%d] ---- Descriptor at address 0x%.*lx ----\n", id, kPointerDigits, static_cast<unsigned long>(address));
        bool hasLength = HasElementLength(rtd);
        if (hasLength && rtd->header.flags != 0) {
            out.Pointer("addr = ", rtd->base_ptr, " -> ");
            MemoryDump(out, rtd->base_ptr, rtd->element_len, kValueIndent);
        } else {
            out.Pointer("addr = ", rtd->base_ptr);
        }
        Header(out, rtd->header);
        if (rtd->header.dscr_type == RTD_ARRAY) {
            ArrayInformation(out, rtd, 0);
        } else if (hasLength) {
            out.Format("element_len = %ld\n", static_cast<long>(rtd->element_len));
        }
        if (VersionNumber(rtd) >= 2) V2Fields(out, rtd);
        out.Format("[%d] -- End Descriptor at address 0x%.*lx --\n", id, kPointerDigits, static_cast<unsigned long>(address));
    }
    WriteNonstop(2, out.text.data(), static_cast<int32_t>(out.text.size()));
}

VRN_EXPORT void _vrndmprtd_cfi(const CFI_cdesc_t* descriptor, int32_t id) {
    Out out;
    if (descriptor == nullptr) {
        out.Format("[%d] Descriptor not found.\n", id);
    } else {
        auto address = static_cast<unsigned long>(reinterpret_cast<uintptr_t>(descriptor));
        out.Format("[%d] ---- C Descriptor at address 0x%.*lx ----\n", id, kPointerDigits, address);
        out.Pointer("base_addr = ", reinterpret_cast<uintptr_t>(descriptor->base_addr));
        out.Format("elem_len = %lu\nversion = %d\nrank = %d\n", static_cast<unsigned long>(descriptor->elem_len),
                   descriptor->version, static_cast<int>(descriptor->rank));
        const char* attribute = descriptor->attribute == CFI_attribute_pointer       ? "pointer"
                                : descriptor->attribute == CFI_attribute_allocatable ? "allocatable"
                                : descriptor->attribute == CFI_attribute_other       ? "other"
                                                                                     : "unknown";
        out.Format("attribute = %d ( %s )\n", static_cast<int>(descriptor->attribute), attribute);
        out.Format("type = %d ( %s )\n", static_cast<int>(descriptor->type), TypeName(descriptor->type).c_str());
        // A rank out of range is shown, but only the dimensions a descriptor can hold print.
        int rank = descriptor->rank < 0 ? 0 : descriptor->rank > CFI_MAX_RANK ? CFI_MAX_RANK : descriptor->rank;
        for (int d = 0; d < rank; ++d) {
            const CFI_dim_t& dimension = descriptor->dim[d];
            out.Format("  Dimension %d:  lower_bound=%ld  extent=%ld  sm=%ld\n", d, static_cast<long>(dimension.lower_bound),
                       static_cast<long>(dimension.extent), static_cast<long>(dimension.sm));
        }
        out.Format("[%d] -- End C Descriptor at address 0x%.*lx --\n", id, kPointerDigits, address);
    }
    WriteNonstop(2, out.text.data(), static_cast<int32_t>(out.text.size()));
}
