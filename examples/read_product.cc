// Reads a product file: its header, single values, arrays, and one record found by a value.
// Usage: read_product_cc FILE
#include <kalv/XmlFile.h>

#include <iostream>
#include <vector>

int main(int count, char** arguments)
{
    if (count != 2)
        return 2;
    try {
        KALV::XmlFile file(arguments[1]);
        const KALV::FixedHeader header = file.getFixedHeader();
        std::cout << header.fileType << " of " << header.mission << ", version " << header.fileVersion
                  << '\n';

        // A single value, an attribute, and a value beside the one read last.
        const std::string passes = "/Orvanto_File/Data_Block/List_of_Passes";
        std::cout << "passes: " << file.getPathValueAsInt(passes + "/@count") << '\n';
        std::cout << "orbit of the third: " << file.getPathValueAsInt(passes + "/Pass[3]/Orbit") << '\n';
        std::cout << "its height: " << file.getPathValueAsReal("../Height") << ' '
                  << file.getPathValueAsString("./@unit") << '\n';

        // One value of every pass at once.
        std::vector<long> orbits;
        std::vector<double> heights;
        file.getPathArrayAsInt(passes + "/Pass[*]/Orbit", orbits);
        file.getPathArrayAsReal(passes + "/Pass[*]/Height", heights);
        for (std::size_t i = 0; i < orbits.size() && i < heights.size(); ++i)
            std::cout << orbits[i] << ' ' << heights[i] << '\n';

        // Where a value stands.
        std::cout << file.findValueInPath(passes + "/Pass[*]/Track", "descending") << '\n';
    } catch (const KALV::KalvError& error) {
        std::cerr << error.what() << '\n';
        return 1;
    }
}
