// Starts what drive.cpp holds; see there.
extern "C" __declspec(dllimport) void Drive();

int main() {
    Drive();
}
