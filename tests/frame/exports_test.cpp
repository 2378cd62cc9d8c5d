// The shared library exports exactly what the header declares, and every
// name it exports belongs to the library's list of 308.
#include <elf.h>
#include <gtest/gtest.h>

#include <cctype>
#include <cstring>
#include <fstream>
#include <iostream>
#include <iterator>
#include <set>
#include <string>
#include <vector>

namespace {

std::vector<char> readFile(const char* path) {
    std::ifstream f(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(f), std::istreambuf_iterator<char>()};
}

// Defined global or weak symbols of the dynamic symbol table.
std::set<std::string> dynamicExports(const char* path) {
    std::set<std::string> out;
    const std::vector<char> img = readFile(path);
    if (img.size() < sizeof(Elf64_Ehdr)) return out;
    Elf64_Ehdr eh;
    std::memcpy(&eh, img.data(), sizeof eh);
    if (std::memcmp(eh.e_ident, ELFMAG, SELFMAG) != 0 || eh.e_ident[EI_CLASS] != ELFCLASS64) return out;
    std::vector<Elf64_Shdr> sh(eh.e_shnum);
    std::memcpy(sh.data(), img.data() + eh.e_shoff, sizeof(Elf64_Shdr) * eh.e_shnum);
    for (const auto& s : sh) {
        if (s.sh_type != SHT_DYNSYM) continue;
        const char* strtab = img.data() + sh[s.sh_link].sh_offset;
        for (size_t off = 0; off + sizeof(Elf64_Sym) <= s.sh_size; off += sizeof(Elf64_Sym)) {
            Elf64_Sym sym;
            std::memcpy(&sym, img.data() + s.sh_offset + off, sizeof sym);
            const int bind = ELF64_ST_BIND(sym.st_info);
            if (sym.st_shndx == SHN_UNDEF || (bind != STB_GLOBAL && bind != STB_WEAK)) continue;
            out.insert(strtab + sym.st_name);
        }
    }
    return out;
}

std::set<std::string> listedNames() {
    std::set<std::string> names;
    std::ifstream f(VQCJ_EXPORT_LIST);
    for (std::string line; std::getline(f, line);)
        if (!line.empty()) names.insert(line);
    return names;
}

std::set<std::string> declaredNames() {
    const std::vector<char> text = readFile(VQCJ_PUBLIC_HEADER);
    const std::string s(text.begin(), text.end());
    auto word = [](char c) { return std::isalnum(static_cast<unsigned char>(c)) || c == '_'; };
    // A name starting vqci or vqcj followed by an opening parenthesis.
    std::set<std::string> names;
    for (size_t i = s.find("vqc"); i != std::string::npos; i = s.find("vqc", i + 1)) {
        if ((i > 0 && word(s[i - 1])) || i + 4 > s.size() || (s[i + 3] != 'i' && s[i + 3] != 'j')) continue;
        size_t e = i;
        while (e < s.size() && word(s[e])) ++e;
        size_t p = e;
        while (p < s.size() && s[p] == ' ') ++p;
        if (p < s.size() && s[p] == '(') names.insert(s.substr(i, e - i));
    }
    return names;
}

}  // namespace

TEST(Exports, ListHoldsTheWholeSurface) {
    const auto listed = listedNames();
    EXPECT_EQ(listed.size(), 308u);
    EXPECT_TRUE(listed.count("vqcjGetLibVersion"));
    EXPECT_TRUE(listed.count("vqciAdd128_JPEG_16s8u_C1R"));
}

TEST(Exports, SharedLibraryExportsExactlyTheDeclaredNames) {
    const auto listed = listedNames();
    const auto declared = declaredNames();
    const auto exported = dynamicExports(VQCJ_SHARED_LIB);
    ASSERT_FALSE(exported.empty()) << "could not read " << VQCJ_SHARED_LIB;

    for (const auto& name : exported) EXPECT_TRUE(listed.count(name)) << name << " is exported but not in the list";
    for (const auto& name : declared) {
        EXPECT_TRUE(listed.count(name)) << name << " is declared but not in the list";
        EXPECT_TRUE(exported.count(name)) << name << " is declared but not exported";
    }
    for (const auto& name : exported) EXPECT_TRUE(declared.count(name)) << name << " is exported but not declared";
    std::cout << "[ exports  ] " << exported.size() << " of " << listed.size() << " exports exist\n";
}
