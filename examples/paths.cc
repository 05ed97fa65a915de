// What paths reach: prints each path beside the path and value of the node where it leads.
// Usage: paths FILE
#include <kalv/XmlFile.h>

#include <iostream>

namespace {

void show(KALV::XmlFile& file, const std::string& path)
{
    std::cout << path << '\n';
    try {
        const std::string value = file.getPathValueAsString(path);
        std::cout << "    " << file.currentPathName() << ": " << value << '\n';
    } catch (const KALV::KalvError& error) {
        std::cout << "    " << error.what() << '\n';
    }
}

} // namespace

int main(int count, char** arguments)
{
    if (count != 2)
        return 2;
    KALV::XmlFile file(arguments[1]);
    file.toPath("/Orvanto_File/Data_Block/List_of_Passes");

    // From the cursor, which each line moves on.
    show(file, "Pass[2]/Height");
    show(file, "@unit");
    show(file, "../Track");
    show(file, ".");
    show(file, "../../Pass/Orbit");

    // From the root.
    show(file, "/Orvanto_File/Data_Block/@type");
    show(file, "//Orvanto_File///Data_Block/List_of_Passes/Pass[3]/Orbit/");

    // Not found, and refused.
    show(file, "/Orvanto_File/Data_Block/List_of_Passes/Pass[4]/Orbit");
    show(file, "/Data_Block/List_of_Passes");
    show(file, ".Orbit");
}
