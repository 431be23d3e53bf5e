// Mesa's OpenGL stack keeps some state for the life of the process, allocated on its
// first use from code it generates at run time, which the leak checker can neither free
// nor attribute. It is made here once, before the tests, with leak checking off for this
// thread; every allocation of the tests themselves is checked.
#include <gtest/gtest.h>

#include <QTest>

#include <zn3dviewer.h>

#if defined(__SANITIZE_ADDRESS__)
#include <sanitizer/lsan_interface.h>
#endif

namespace {

// A view drawn and picked in, as the tests do.
void drawOnce()
{
    ZN3DViewer viewer;
    viewer.resize(64, 64);
    viewer.show();
    if (!QTest::qWaitForWindowExposed(&viewer)) return;  // the tests will say why
    viewer.scene().setItem(1, ZN3DReferencePointItem{});
    viewer.renderToImage();
    viewer.pickAt(QPointF(32, 32));
}

class OpenGLWarmUp : public ::testing::Environment {
public:
    void SetUp() override
    {
#if defined(__SANITIZE_ADDRESS__)
        __lsan_disable();
#endif
        drawOnce();
#if defined(__SANITIZE_ADDRESS__)
        __lsan_enable();
#endif
    }
};

const ::testing::Environment* const kWarmUp = ::testing::AddGlobalTestEnvironment(new OpenGLWarmUp);

} // namespace
