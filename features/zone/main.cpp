// zone: the zone feature process.
#include "zone_feature.h"

int main(int argc, char **argv)
{
    wex_feature::ZoneFeature feature;
    return wex_feature::run(feature, argc, argv);
}
