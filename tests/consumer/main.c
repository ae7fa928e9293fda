/* Uses the installed C interface from outside. */
#include <lirvox/lirvox_c.h>

int main(void) {
  lirvox_platform* const platform = lirvox_platform_new("consumer");
  const int failed = lirvox_platform_use_no_sound(platform) != LIRVOX_OK ||
                     lirvox_platform_install(platform) != LIRVOX_OK ||
                     lirvox_can_recognize(lirvox_shared_instance()) != LIRVOX_NO_DATABASE;
  lirvox_platform_free(platform);
  return failed;
}
