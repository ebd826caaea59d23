import com.sun.jna.Library;
import com.sun.jna.Native;
import com.sun.jna.Pointer;
import com.sun.jna.ptr.PointerByReference;

/** Checks whether the tables of one schema file may become those of another, and prints the report: Embed OLD NEW */
class Embed {
  /** What this program needs of korvelcheck/korvelcheck.h. A size_t is a long on 64-bit machines. */
  interface Korvelcheck extends Library {
    Korvelcheck LIBRARY = Native.load("korvelcheck", Korvelcheck.class);

    int kc_schema_load_file(String path, PointerByReference schema, PointerByReference error);
    int kc_check(Pointer oldSchema, Pointer newSchema, Pointer tables, long tableCount, Pointer settings, PointerByReference report,
                 PointerByReference error);
    int kc_report_text(Pointer report, String format, PointerByReference text, Pointer size, PointerByReference error);
    String kc_error_message(Pointer error);
    void kc_error_free(Pointer error);
    void kc_report_free(Pointer report);
    void kc_schema_free(Pointer schema);
  }

  static void require(int result, PointerByReference error) {
    if (result == 0) return;
    String message = Korvelcheck.LIBRARY.kc_error_message(error.getValue());
    Korvelcheck.LIBRARY.kc_error_free(error.getValue());
    throw new IllegalArgumentException(message);
  }

  static Pointer load(String path) {
    PointerByReference schema = new PointerByReference(), error = new PointerByReference();
    require(Korvelcheck.LIBRARY.kc_schema_load_file(path, schema, error), error);
    return schema.getValue();
  }

  /** The report as text; "json" gives one to parse. */
  static String check(Pointer oldSchema, Pointer newSchema, String format) {
    PointerByReference report = new PointerByReference(), text = new PointerByReference(), error = new PointerByReference();
    require(Korvelcheck.LIBRARY.kc_check(oldSchema, newSchema, null, 0, null, report, error), error);
    try {
      require(Korvelcheck.LIBRARY.kc_report_text(report.getValue(), format, text, null, error), error);
      return text.getValue().getString(0, "UTF-8");
    } finally {
      Korvelcheck.LIBRARY.kc_report_free(report.getValue());
    }
  }

  public static void main(String[] arguments) {
    Pointer oldSchema = load(arguments[0]), newSchema = load(arguments[1]);
    System.out.print(check(oldSchema, newSchema, "text"));
    Korvelcheck.LIBRARY.kc_schema_free(newSchema);
    Korvelcheck.LIBRARY.kc_schema_free(oldSchema);
  }
}
