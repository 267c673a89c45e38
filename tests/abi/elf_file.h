// What a test wants to know of a shared library: its dynamic section, its undefined symbols, its constructors.
#pragma once

#include <elf.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace nax::testing {

class ElfFile {
public:
    explicit ElfFile(const std::filesystem::path& path) {
        std::ifstream file(path, std::ios::binary);
        bytes_.assign(std::istreambuf_iterator<char>(file), {});
        if (bytes_.size() < sizeof(Elf64_Ehdr) || std::memcmp(bytes_.data(), ELFMAG, SELFMAG) != 0) return;
        header_ = at<Elf64_Ehdr>(0);
        sections_ = at<Elf64_Shdr>(header_->e_shoff);
    }

    bool valid() const { return header_ != nullptr; }

    // Texts of the dynamic section's entries with a tag, such as DT_NEEDED.
    std::vector<std::string> dynamic_texts(Elf64_Sxword tag) const {
        std::vector<std::string> texts;
        for (const Elf64_Dyn& entry : rows<Elf64_Dyn>(SHT_DYNAMIC))
            if (entry.d_tag == tag) texts.emplace_back(text(SHT_DYNAMIC, entry.d_un.d_val));
        return texts;
    }
    // Value of the first entry with a tag, or 0.
    uint64_t dynamic_value(Elf64_Sxword tag) const {
        for (const Elf64_Dyn& entry : rows<Elf64_Dyn>(SHT_DYNAMIC))
            if (entry.d_tag == tag) return entry.d_un.d_val;
        return 0;
    }
    std::vector<std::string> undefined_symbols() const {
        std::vector<std::string> names;
        for (const Elf64_Sym& symbol : rows<Elf64_Sym>(SHT_DYNSYM))
            if (symbol.st_shndx == SHN_UNDEF && symbol.st_name != 0)
                names.emplace_back(text(SHT_DYNSYM, symbol.st_name));
        return names;
    }
    std::vector<std::string> defined_symbols() const {
        std::vector<std::string> names;
        for (const Elf64_Sym& symbol : rows<Elf64_Sym>(SHT_DYNSYM))
            if (symbol.st_shndx != SHN_UNDEF) names.emplace_back(text(SHT_DYNSYM, symbol.st_name));
        return names;
    }
    size_t constructors() const { return rows<Elf64_Addr>(SHT_INIT_ARRAY).size(); }
    size_t destructors() const { return rows<Elf64_Addr>(SHT_FINI_ARRAY).size(); }
    bool contains(const std::string& text) const { return bytes_.find(text) != std::string::npos; }

private:
    template <class T>
    const T* at(uint64_t offset) const {
        return reinterpret_cast<const T*>(bytes_.data() + offset);
    }
    const Elf64_Shdr* section(Elf64_Word type) const {
        for (int i = 0; i < header_->e_shnum; ++i)
            if (sections_[i].sh_type == type) return &sections_[i];
        return nullptr;
    }
    template <class T>
    std::vector<T> rows(Elf64_Word type) const {
        const Elf64_Shdr* const found = section(type);
        if (found == nullptr) return {};
        return std::vector<T>(at<T>(found->sh_offset), at<T>(found->sh_offset) + found->sh_size / sizeof(T));
    }
    // A text of the string table that belongs to a section.
    const char* text(Elf64_Word type, uint64_t offset) const {
        return at<char>(sections_[section(type)->sh_link].sh_offset + offset);
    }

    std::string bytes_;
    const Elf64_Ehdr* header_ = nullptr;
    const Elf64_Shdr* sections_ = nullptr;
};

}  // namespace nax::testing
