#include <kalv/XmlFile.h>

#include <iostream>
#include <vector>

int main()
{
    try {
        KALV::XmlFile file;
        file.create();
        file.createRoot("Measurements");
        for (long orbit = 1; orbit <= 3; ++orbit) {
            file.addChild("/Measurements", "Item");
            file.addChild(".", "Orbit", orbit, "%ld");
            file.addNext(".", "Height", 700.5 + static_cast<double>(orbit), "%.3f");
        }
        file.write("measurements.xml");

        KALV::XmlFile again("measurements.xml");
        std::vector<double> heights;
        again.getPathArrayAsReal("/Measurements/Item[*]/Height", heights);
        std::cout << heights.size() << " heights, the second is "
                  << again.getPathValueAsReal("/Measurements/Item[2]/Height") << '\n';
    } catch (const KALV::KalvError& error) {
        std::cerr << error.what() << '\n';
        return 1;
    }
}
