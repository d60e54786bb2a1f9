// What would go wrong on the network.
#include "client/fleet/conflicts.h"

#include <gmock/gmock.h>

#include "client/text.h"
#include "fake_link.h"

using namespace client;
using testing::ElementsAre;
using testing::IsEmpty;

static Mac macOf(uint8_t number) { return {{0x02, 0x00, 0x5E, 0x10, 0x00, number}}; }

static Found foundAt(uint8_t number, const std::string& address) {
    Found found{};
    found.camera.mac = macOf(number);
    found.camera.address = *parseAddress(address);
    found.interface = nearInterface();  // 192.0.2.1/24
    found.answered = true;
    return found;
}

class Conflicts : public testing::Test {
protected:
    // A camera that is at one address and is to be at another.
    void camera(uint8_t number, const std::string& from, const std::string& to) {
        found.push_back(foundAt(number, from));
        file[number].mac = macOf(number);
        file[number].place = {number, 0};
        PlannedCamera one{&file[number], {}};
        one.plan.found = found.back();
        one.plan.state.camera = found.back().camera;
        one.plan.wanted.camera = found.back().camera;
        one.plan.wanted.camera.address = *parseAddress(to);
        planned.push_back(one);
    }

    std::vector<std::string> conflicts(Elsewhere elsewhere = Elsewhere::Refused) const {
        std::vector<std::string> texts;
        for (const Fault& fault : findConflicts(planned, found, hosts, elsewhere)) {
            texts.push_back(std::to_string(fault.place.line) + " " + fault.text);
        }
        return texts;
    }

    FileCamera file[10];
    std::vector<PlannedCamera> planned;
    std::vector<Found> found;
    std::vector<std::pair<Ipv4, Mac>> hosts;
};

TEST_F(Conflicts, NoneWhereNothingMovesOrAllIsFree) {
    camera(1, "192.0.2.10", "192.0.2.10");
    camera(2, "192.0.2.10", "192.0.2.11");
    hosts = {{{{192, 0, 2, 10}}, macOf(9)}};
    EXPECT_THAT(conflicts(), IsEmpty());
    EXPECT_EQ(newAddresses(planned).size(), 1u);
}

TEST_F(Conflicts, AnAddressOfACameraThatIsThere) {
    camera(1, "192.0.2.10", "192.0.2.20");
    found.push_back(foundAt(5, "192.0.2.20"));
    EXPECT_THAT(conflicts(), ElementsAre("1 ipv4.address 192.0.2.20 is that of camera 02:00:5e:10:00:05"));
}

TEST_F(Conflicts, AnAddressThatIsFreeOnlyLater) {
    camera(1, "192.0.2.10", "192.0.2.11");
    camera(2, "192.0.2.11", "192.0.2.12");
    EXPECT_THAT(conflicts(), ElementsAre("1 ipv4.address 192.0.2.11 is that of camera 02:00:5e:10:00:02 until that is "
                                         "moved: do that first, with a file of its own"));
}

TEST_F(Conflicts, TwoThatSwapTheirAddresses) {
    camera(1, "192.0.2.10", "192.0.2.11");
    camera(2, "192.0.2.11", "192.0.2.10");
    const std::string way = ", which is to get its own: first give one of them a free address, with a file of its own";
    EXPECT_THAT(conflicts(), ElementsAre("1 ipv4.address 192.0.2.11 is that of camera 02:00:5e:10:00:02" + way,
                                         "2 ipv4.address 192.0.2.10 is that of camera 02:00:5e:10:00:01" + way));
}

TEST_F(Conflicts, AnAddressOfSomeOtherHost) {
    camera(1, "192.0.2.10", "192.0.2.20");
    hosts = {{{{192, 0, 2, 20}}, {{2, 0, 0, 0, 0, 0x99}}}};
    EXPECT_THAT(conflicts(), ElementsAre("1 ipv4.address 192.0.2.20 is in use: 02:00:00:00:00:99 answers there"));
    hosts[0].second = macOf(1);  // it was there itself a moment ago
    EXPECT_THAT(conflicts(), IsEmpty());
}

TEST_F(Conflicts, AnAddressOfThisMachineOrOfTheGateway) {
    camera(1, "192.0.2.10", "192.0.2.1");
    planned[0].plan.wanted.camera.gateway = {{192, 0, 2, 1}};
    EXPECT_THAT(conflicts(), ElementsAre("1 ipv4.address 192.0.2.1 is that of its gateway",
                                         "1 ipv4.address 192.0.2.1 is that of this machine"));
}

TEST_F(Conflicts, AnAddressOfAnotherNetwork) {
    camera(1, "192.0.2.10", "10.0.0.7");
    EXPECT_THAT(conflicts(), ElementsAre("1 ipv4.address 10.0.0.7 is outside the network of eth0, where the camera is; "
                                         "--elsewhere allows that"));
    EXPECT_THAT(conflicts(Elsewhere::Allowed), IsEmpty());
    EXPECT_THAT(newAddresses(planned), IsEmpty());
}

TEST_F(Conflicts, ACameraThatGetsItsAddressByDhcpIsNotMoved) {
    camera(1, "192.0.2.10", "192.0.2.20");
    planned[0].plan.wanted.camera.dhcp = true;
    found.push_back(foundAt(5, "192.0.2.20"));
    EXPECT_THAT(conflicts(), IsEmpty());
}
