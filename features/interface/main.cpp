// interface: the interface feature process.
#include "interface_feature.h"

int main(int argc, char **argv)
{
    wex_feature::InterfaceFeature feature;
    return wex_feature::run(feature, argc, argv);
}
