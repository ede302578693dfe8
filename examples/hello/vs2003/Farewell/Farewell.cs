using System;
using System.IO;
using System.Resources;

namespace Farewell.Console
{
    /// <summary>Says goodbye with a string from Farewell.resx and a banner embedded as it stands.</summary>
    class FarewellApp
    {
        static void Main()
        {
            Stream banner = typeof(FarewellApp).Assembly.GetManifestResourceStream("Farewell.Text.Banner.txt");
            System.Console.Write(new StreamReader(banner).ReadToEnd());
            System.Console.WriteLine(new ResourceManager(typeof(FarewellApp)).GetString("Goodbye"));
        }
    }
}
