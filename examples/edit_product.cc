// Corrects a product file and writes the result to another one.
// Usage: edit_product FILE RESULT
#include <kalv/XmlFile.h>

#include <iostream>

int main(int count, char** arguments)
{
    if (count != 3)
        return 2;
    try {
        KALV::XmlFile file(arguments[1]);
        const std::string passes = "/Orvanto_File/Data_Block/List_of_Passes";

        // The height of the pass that descends; the path found is followed by a step to its neighbour.
        const std::string track = file.findValueInPath(passes + "/Pass[*]/Track", "descending");
        file.setValue(track + "/../Height", -0.029, "%.3f");

        // One pass less, one remark more.
        file.removeNode(passes + "/Pass[3]");
        file.setValue(passes + "/@count", 2);
        file.addPrevious(passes + "/Pass[1]/Orbit", "Remark", "corrected: tides & surges");

        file.setFixedHeaderItem("File_Version", "2");
        file.write(arguments[2]);

        KALV::XmlFile again(arguments[2]);
        std::cout << "version " << again.getFixedHeader().fileVersion << '\n';
        std::cout << again.getPathValueAsString(track + "/../Height") << '\n';
        std::cout << again.getPathValueAsString(passes + "/Pass[1]/Remark") << '\n';
    } catch (const KALV::KalvError& error) {
        std::cerr << error.what() << '\n';
        return 1;
    }
}
